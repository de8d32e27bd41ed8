#include "switch/world.h"

#include <algorithm>

namespace lab {
namespace {

constexpr uint32_t first_channel_id_of_names = 0x10000;

// The id of a channel, which is made where there is none.
uint32_t channel_id(Settings &settings, const ChannelRef &ref) {
  if (ref.name.empty()) return 0;
  Channel &channel = channel_named(settings, ref.name);
  if (ref.id != 0) channel.id = ref.id;
  if (channel.id == 0) {
    const std::size_t digits = ref.name.find_last_not_of("0123456789") + 1;
    uint32_t id = parse_number(std::string_view(ref.name).substr(digits)).value_or(0);
    if (id == 0) id = first_channel_id_of_names;
    while (find_channel(settings, id) != nullptr) id = std::max(id + 1, first_channel_id_of_names);
    channel_named(settings, ref.name).id = id;
  }
  return channel_named(settings, ref.name).id;
}

void apply(const ChannelGroup &group, Settings &settings) {
  if (channel_id(settings, group.channel) == 0) return;
  Channel &channel = channel_named(settings, group.channel.name);
  if (group.internal) channel.internal = *group.internal;
  if (group.vlans) channel.vlans = *group.vlans;
}

// The index of a port that is known by its name.
uint32_t index_of_name(const Settings &settings, const std::string &name, uint32_t channel) {
  if (const Port *known = find_port(settings, name); known != nullptr) return known->index;
  uint32_t index = first_channel_index + channel;
  while (find_port(settings, index) != nullptr) ++index;
  return index;
}

// The indexes of the ports that a group is about.
std::vector<uint32_t> apply(const PortGroup &group, Settings &settings) {
  const uint32_t channel = group.channel ? channel_id(settings, *group.channel) : 0;
  Ranges ranges = group.indexes;
  if (ranges.empty() && !group.name.empty()) {
    const uint32_t index = index_of_name(settings, group.name, channel);
    ranges = {{index, index}};
  }
  std::vector<uint32_t> indexes;
  for (const auto &[first, last] : ranges) {
    for (uint64_t index = first; index <= last; ++index) {
      Port &port = port_at(settings, uint32_t(index));
      indexes.push_back(port.index);
      if (!group.name.empty()) port.name = group.name;
      if (group.channel) port.channel = channel;
      if (group.pod) port.pod = *group.pod;
      if (group.spanning_tree) port.spanning_tree = *group.spanning_tree;
      for (const Entry &entry : group.parameters) put_entry(port.parameters, entry);
      for (const auto &[field, value] : group.uncovered) port.uncovered[field] = value;
    }
  }
  return indexes;
}

}  // namespace

void check_collisions(Reader &reader, const YAML::Node &node, const Settings &before,
                      const World &world) {
  std::map<uint32_t, std::string> channels;
  for (const Channel &channel : before.channels) channels[channel.id] = channel.name;
  for (const ChannelGroup &group : world.channels) {
    if (group.channel.id == 0) continue;
    const auto [at, is_new] = channels.try_emplace(group.channel.id, group.channel.name);
    if (is_new || at->second == group.channel.name) continue;
    reader.add_error(node["channels"],
                     "found " + at->second + " and " + group.channel.name + " with the id " +
                         std::to_string(group.channel.id),
                     "an id for each channel");
  }
  std::map<uint32_t, std::string> ports;
  for (const Port &port : before.ports) {
    if (!port.name.empty()) ports[port.index] = port.name;
  }
  for (const PortGroup &group : world.ports) {
    if (group.name.empty() || group.indexes.empty()) continue;
    const uint32_t index = group.indexes[0].first;
    const auto [at, is_new] = ports.try_emplace(index, group.name);
    if (is_new || at->second == group.name) continue;
    reader.add_error(
        node["ports"],
        "found " + at->second + " and " + group.name + " with the index " + port_text(index),
        "an index for each port");
  }
}

WorldChange change_by(const World &world, Settings &settings) {
  WorldChange change{world.trunk, world.user_vlans, {}, {}};
  if (world.trunk) settings.trunk = *world.trunk;
  if (world.user_vlans) settings.user_vlans = *world.user_vlans;
  for (const ChannelGroup &group : world.channels) apply(group, settings);
  std::vector<uint32_t> touched;
  for (const PortGroup &group : world.ports) {
    const std::vector<uint32_t> indexes = apply(group, settings);
    touched.insert(touched.end(), indexes.begin(), indexes.end());
  }
  std::sort(touched.begin(), touched.end());
  touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
  for (const uint32_t index : touched) {
    Port port = *find_port(settings, index);
    port.parameters.clear();
    change.ports.push_back(std::move(port));
  }
  if (!world.channels.empty() || !world.ports.empty()) change.channels = settings.channels;
  return change;
}

void put_entry(std::vector<Entry> &entries, const Entry &entry) {
  std::erase_if(entries, [&](const Entry &before) { return before.type == entry.type; });
  entries.push_back(entry);
}

}  // namespace lab
