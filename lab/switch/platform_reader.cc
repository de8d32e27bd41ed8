#include <algorithm>
#include <map>

#include "switch/state_file.h"
#include "switch/values.h"
#include "text/yaml.h"

namespace lab {
namespace {

constexpr uint32_t max_ports = 100000;
constexpr uint32_t first_generated_id = 0x10000;  // of channels whose names have no number

// --- channels ---

// A reference to a channel by its number or its name.
struct ChannelRef {
  std::string name;  // empty: no channel
  uint32_t id = 0;   // 0: not specified
};

ChannelRef read_channel(Reader &reader, const YAML::Node &node) {
  const std::string what = "a channel: its number or its name";
  const std::string text = reader.name(node, what);
  const auto number = parse_number(text);
  if (number) return {*number != 0 ? "channel " + std::to_string(*number) : "", *number};
  if (text.empty() || printable(text) != text) {
    reader.expected(node, what);
  }
  return {printable(text), 0};
}

// Returns the channel of a reference, which is added if it is missing; nullptr for no channel.
Channel *get_or_add_channel(Settings &settings, const ChannelRef &ref) {
  if (ref.name.empty()) return nullptr;
  Channel &channel = channel_named(settings, ref.name);
  if (ref.id != 0) channel.id = ref.id;
  if (channel.id == 0) {
    const std::size_t digits = ref.name.find_last_not_of("0123456789") + 1;
    uint32_t id = parse_number(std::string_view(ref.name).substr(digits)).value_or(0);
    if (id == 0) id = first_generated_id;
    while (find_channel(settings, id) != nullptr) id = std::max(id + 1, first_generated_id);
    channel.id = id;
  }
  return &channel;
}

void add_channel(Reader &reader, const YAML::Node &node, Settings &settings, const ChannelRef &ref,
                 std::optional<bool> internal, const std::optional<Vlans> &vlans) {
  const Channel *known = ref.id != 0 ? find_channel(settings, ref.id) : nullptr;
  if (known != nullptr && known->name != ref.name) {
    reader.add_error(
        node,
        "found " + known->name + " and " + ref.name + " with the id " + std::to_string(ref.id),
        "a unique id for each channel");
  }
  Channel *channel = get_or_add_channel(settings, ref);
  if (channel != nullptr && internal) channel->internal = *internal;
  if (channel != nullptr && vlans) channel->vlans = *vlans;
}

void read_channel_group(Reader &reader, const YAML::Node &node, Settings &settings) {
  const std::string what = "a channel";
  if (!reader.mapping(node, what, {"channel", "id", "internal", "vlans"})) return;
  ChannelRef ref;
  std::optional<bool> internal;
  std::optional<Vlans> vlans;
  if (node["channel"]) ref = read_channel(reader, node["channel"]);
  if (node["id"]) ref.id = reader.number(node["id"], "id", 1);
  if (node["internal"]) internal = reader.boolean(node["internal"], "internal");
  if (node["vlans"]) vlans = read_vlan_list(reader, node["vlans"], "vlans");
  reader.required(node, "channel", what);
  add_channel(reader, node, settings, ref, internal, vlans);
}

// --- ports ---

// The contents of a mapping for a group of ports.
struct PortGroup {
  Ranges indexes = {};
  std::string name = {};  // if the group is a single port with a name
  std::optional<ChannelRef> channel = {};
  std::optional<bool> pod = {};
  std::optional<bool> spanning_tree = {};
  std::vector<Entry> parameters = {};
  std::map<std::string, std::string> uncovered = {};
};

Ranges read_indexes(Reader &reader, const YAML::Node &node) {
  const std::string what = "ports: port indexes";
  const Ranges ranges = reader.ranges(node, what, UINT32_MAX, "0x1000-0x1003,0x2000");
  uint64_t count = 0;
  for (const auto &[first, last] : ranges) count += uint64_t{last} - first + 1;
  if (count <= max_ports) return ranges;
  reader.expected(node, what + ", at most " + std::to_string(max_ports) + " of them");
  return {};
}

std::string read_port_name(Reader &reader, const YAML::Node &node) {
  const std::string name = printable(reader.name(node, "the name of a port"));
  if (name.empty() || parse_ranges(name, UINT32_MAX).fault != RangeError::not_a_list) {
    reader.expected(node, "the name of a port; indexes go with 'ports'");
  }
  return name;
}

// Ports are specified by their indexes, or a single one by its name.
void check_port_keys(Reader &reader, const YAML::Node &node, PortGroup &group) {
  if (node["ports"].IsDefined() == node["port"].IsDefined()) {
    reader.add_error(node,
                     std::string("a group of ports") +
                         (node["port"] ? " with 'ports' and 'port'" : " without 'ports'"),
                     "indexes under 'ports', or a name under 'port'");
    group.name.clear();
  }
  if (node["index"] && node["ports"]) {
    reader.add_error(node["index"], "found 'index' with 'ports'", "'port', a name");
  }
  if (node["channel"] && node["member"]) {
    reader.add_error(node["member"], "found 'member' with 'channel'", "one of them");
  }
}

PortGroup read_port_group(Reader &reader, const YAML::Node &node, bool is_change) {
  PortGroup group;
  std::vector<std::string> keys = {"ports",  "port", "index",         "channel",
                                   "member", "pod",  "spanning-tree", "uncovered"};
  if (!is_change) keys.emplace_back("parameters");
  if (!reader.mapping(node, "a group of ports", keys)) return group;
  if (node["ports"]) group.indexes = read_indexes(reader, node["ports"]);
  if (node["port"]) group.name = read_port_name(reader, node["port"]);
  if (node["index"]) {
    const uint32_t index = reader.number(node["index"], "index");
    group.indexes = {{index, index}};
  }
  for (const char *key : {"channel", "member"}) {
    if (node[key]) group.channel = read_channel(reader, node[key]);
  }
  if (node["pod"]) group.pod = reader.boolean(node["pod"], "pod");
  if (node["spanning-tree"]) {
    group.spanning_tree = reader.boolean(node["spanning-tree"], "spanning-tree");
  }
  if (node["uncovered"]) {
    reader.entries(
        node["uncovered"], "names and texts", [&](const YAML::Node &name, const YAML::Node &text) {
          group.uncovered[reader.verbatim(name, "a name")] = reader.verbatim(text, "a text");
        });
  }
  if (node["parameters"] && !is_change) {
    group.parameters = read_parameters(reader, node["parameters"], "parameters", false);
  }
  check_port_keys(reader, node, group);
  return group;
}

// Returns the index of a port without a specified index: its current one, or a free one.
uint32_t index_of_name(const Settings &settings, const std::string &name, uint32_t channel) {
  if (const Port *known = find_port(settings, name)) return known->index;
  uint32_t index = first_channel_index + channel;
  while (find_port(settings, index) != nullptr) ++index;
  return index;
}

void add_ports(Reader &reader, const YAML::Node &node, Settings &settings, const PortGroup &group) {
  const Channel *added = group.channel ? get_or_add_channel(settings, *group.channel) : nullptr;
  const uint32_t channel = added != nullptr ? added->id : 0;
  Ranges ranges = group.indexes;
  if (ranges.empty() && !group.name.empty()) {
    const uint32_t index = index_of_name(settings, group.name, channel);
    ranges = {{index, index}};
  }
  for (const auto &[first, last] : ranges) {
    for (uint64_t index = first; index <= last; ++index) {
      Port &port = port_at(settings, uint32_t(index));
      if (!group.name.empty() && !port.name.empty() && port.name != group.name) {
        reader.add_error(node,
                         "found " + port.name + " and " + group.name + " with the index " +
                             port_text(port.index),
                         "a unique index for each port");
      }
      if (!group.name.empty()) port.name = group.name;
      if (group.channel) port.channel = channel;
      port.pod = group.pod.value_or(port.pod);
      port.spanning_tree = group.spanning_tree.value_or(port.spanning_tree);
      for (const Entry &entry : group.parameters) put_entry(port.parameters, entry);
      for (const auto &[field, value] : group.uncovered) port.uncovered[field] = value;
    }
  }
}

}  // namespace

void read_platform(Reader &reader, const YAML::Node &node, Settings &settings, bool is_change) {
  if (node["trunk"]) settings.trunk = reader.boolean(node["trunk"], "trunk");
  if (node["user-vlans"]) {
    settings.user_vlans = read_vlan_list(reader, node["user-vlans"], "user-vlans");
  }
  read_list(reader, node["channels"], "a list of channels",
            [&](const YAML::Node &group) { read_channel_group(reader, group, settings); });
  read_list(reader, node["internal-channels"], "a list of channels, for instance [10, 11]",
            [&](const YAML::Node &channel) {
              add_channel(reader, channel, settings, read_channel(reader, channel), true, {});
            });
  read_list(reader, node["ports"], "a list of groups of ports", [&](const YAML::Node &group) {
    add_ports(reader, group, settings, read_port_group(reader, group, is_change));
  });
}

}  // namespace lab
