#include "switch/state_reader.h"

#include <algorithm>

#include "switch/names.h"
#include "switch/values.h"
#include "tasks/side.h"

namespace lab {
namespace {

constexpr uint32_t most_ports = 100000;
constexpr uint32_t first_channel_id_of_names = 0x10000;

// What a mapping calls a channel: by its number or its name.
struct ChannelRef {
  std::string name;  // empty: no channel
  uint32_t id = 0;   // 0: not said
};

struct ChannelGroup {
  ChannelRef channel;
  std::optional<bool> internal;
  std::optional<Vlans> vlans;
};

// What a mapping says of some ports; what it does not say stays as it was.
struct PortGroup {
  Ranges indexes;
  std::string name;  // of the one port
  std::optional<ChannelRef> channel;
  std::optional<bool> pod;
  std::optional<uint8_t> type;
  std::optional<uint32_t> layer_mode;
  std::vector<Entry> parameters;
  std::map<std::string, std::string> uncovered;
};

// What a mapping says of the world around the library.
struct World {
  std::optional<bool> trunk;
  std::optional<Vlans> user_vlans;
  std::vector<ChannelGroup> channels;
  std::vector<PortGroup> ports;
};

const std::vector<std::string> world_keys = {"trunk", "user-vlans", "channels", "internal-channels",
                                             "ports"};

std::vector<std::string> and_keys(std::vector<std::string> keys,
                                  const std::vector<std::string> &more) {
  keys.insert(keys.end(), more.begin(), more.end());
  return keys;
}

// --- reading ---

ChannelRef read_channel(Reader &reader, const YAML::Node &node) {
  const std::string given = reader.verbatim(node, "a channel: its number or its name");
  const auto number = parse_number(given);
  if (number) return {*number != 0 ? "channel " + std::to_string(*number) : "", *number};
  if (given.empty() || printable(given) != given) {
    reader.expected(node, "a channel: its number or its name");
  }
  return {printable(given), 0};
}

ChannelGroup read_channel_group(Reader &reader, const YAML::Node &node) {
  ChannelGroup group;
  const char *const what = "a channel";
  if (!reader.mapping(node, what, {"channel", "id", "internal", "vlans"}) ||
      !reader.required(node, "channel", what)) {
    return group;
  }
  group.channel = read_channel(reader, node["channel"]);
  if (node["id"]) group.channel.id = reader.number(node["id"], "id", 1);
  if (node["internal"]) group.internal = reader.boolean(node["internal"], "internal");
  if (node["vlans"]) group.vlans = read_vlan_list(reader, node["vlans"], "vlans");
  return group;
}

Ranges read_indexes(Reader &reader, const YAML::Node &node, const std::string &what) {
  const std::string full = what + ": port indexes";
  const std::string example = "0x1000-0x1003,0x2000";
  Ranges ranges = reader.ranges(node, full, UINT32_MAX, example);
  uint64_t count = 0;
  for (const auto &[first, last] : ranges) count += uint64_t{last} - first + 1;
  if (count <= most_ports) return ranges;
  reader.expected(node, full + ", at most " + std::to_string(most_ports) + " of them");
  return {};
}

PortGroup read_port_group(Reader &reader, const YAML::Node &node, bool with_parameters) {
  PortGroup group;
  const char *const what = "a group of ports";
  std::vector<std::string> keys = {"ports", "port", "index",      "channel",  "member",
                                   "pod",   "type", "layer-mode", "uncovered"};
  if (with_parameters) keys.emplace_back("parameters");
  if (!reader.mapping(node, what, keys)) return group;
  if (node["ports"].IsDefined() == node["port"].IsDefined()) {
    reader.add_error(
        node, std::string(what) + (node["port"] ? " with 'ports' and 'port'" : " without 'ports'"),
        "indexes under 'ports', or a name under 'port'");
  } else if (node["ports"]) {
    group.indexes = read_indexes(reader, node["ports"], "ports");
  } else {
    group.name = printable(reader.name(node["port"], "the name of a port"));
    if (parse_ranges(group.name, UINT32_MAX).fault != RangeFault::no_list || group.name.empty()) {
      reader.expected(node["port"], "the name of a port; indexes go with 'ports'");
    }
  }
  if (node["index"]) {
    const uint32_t index = reader.number(node["index"], "index");
    group.indexes = {{index, index}};
    if (node["ports"])
      reader.add_error(node["index"], "found 'index' with 'ports'", "'port', a name");
  }
  if (node["channel"] && node["member"]) {
    reader.add_error(node["member"], "found 'member' besides 'channel'", "one of them");
  }
  for (const char *key : {"channel", "member"}) {
    if (node[key]) group.channel = read_channel(reader, node[key]);
  }
  if (node["pod"]) group.pod = reader.boolean(node["pod"], "pod");
  if (node["type"]) group.type = uint8_t(reader.number(node["type"], "type", 0, UINT8_MAX));
  if (node["layer-mode"]) group.layer_mode = reader.number(node["layer-mode"], "layer-mode");
  if (node["parameters"]) {
    group.parameters = read_parameters(reader, node["parameters"], "parameters", false);
  }
  if (node["uncovered"]) {
    reader.entries(
        node["uncovered"], "names and texts", [&](const YAML::Node &key, const YAML::Node &value) {
          group.uncovered[reader.verbatim(key, "a name")] = reader.verbatim(value, "a text");
        });
  }
  return group;
}

World read_world(Reader &reader, const YAML::Node &node, bool with_parameters) {
  World world;
  if (node["trunk"]) world.trunk = reader.boolean(node["trunk"], "trunk");
  if (node["user-vlans"])
    world.user_vlans = read_vlan_list(reader, node["user-vlans"], "user-vlans");
  const YAML::Node channels = node["channels"];
  if (channels && reader.sequence(channels, "a list of channels")) {
    for (const auto &channel : channels) {
      world.channels.push_back(read_channel_group(reader, channel));
    }
  }
  const YAML::Node internal = node["internal-channels"];
  if (internal && reader.sequence(internal, "a list of channels, for instance [10, 11]")) {
    for (const auto &channel : internal) {
      world.channels.push_back({read_channel(reader, channel), true, {}});
    }
  }
  const YAML::Node groups = node["ports"];
  if (groups && reader.sequence(groups, "a list of groups of ports")) {
    for (const auto &group : groups) {
      world.ports.push_back(read_port_group(reader, group, with_parameters));
    }
  }
  return world;
}

// --- what was read, applied to a switch ---

// What is said last counts.
void put_entry(std::vector<Entry> &entries, const Entry &entry) {
  std::erase_if(entries, [&](const Entry &before) { return before.type == entry.type; });
  entries.push_back(entry);
}

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

// Numbers that would make one channel or port of two.
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
      if (group.type) port.type = *group.type;
      if (group.layer_mode) port.layer_mode = *group.layer_mode;
      for (const Entry &entry : group.parameters) put_entry(port.parameters, entry);
      for (const auto &[field, value] : group.uncovered) port.uncovered[field] = value;
    }
  }
  return indexes;
}

// The change that brings a switch what a mapping says.
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

// Only what a state file has besides what a scenario writes of a switch.
void read_identity(Reader &reader, const YAML::Node &node, Settings &settings) {
  if (node["name"]) settings.name = reader.name(node["name"], "the switch's name");
  if (node["address"]) settings.address = reader.verbatim(node["address"], "the switch's address");
  if (node["spanning-tree"]) {
    settings.spanning_tree = reader.boolean(node["spanning-tree"], "spanning-tree");
  }
  const YAML::Node peerings = node["peerings"];
  if (!peerings || !reader.sequence(peerings, "a list of {source, peer}")) return;
  settings.peerings.clear();
  for (const auto &peering : peerings) {
    if (!reader.mapping(peering, "a peering", {"source", "peer"})) continue;
    settings.peerings.push_back({});
    if (peering["source"]) {
      settings.peerings.back().source = reader.verbatim(peering["source"], "an address");
    }
    if (peering["peer"])
      settings.peerings.back().peer = reader.verbatim(peering["peer"], "an address");
  }
}

const std::vector<std::string> &switch_keys() {
  static const std::vector<std::string> keys =
      and_keys({"name", "address", "spanning-tree", "peerings", "parameters"}, world_keys);
  return keys;
}

void read_settings(Reader &reader, const YAML::Node &node, Settings &settings) {
  read_identity(reader, node, settings);
  const World world = read_world(reader, node, true);
  check_collisions(reader, node, settings, world);
  change_by(world, settings);
  if (!node["parameters"]) return;
  for (const Entry &entry : read_parameters(reader, node["parameters"], "parameters", true)) {
    put_entry(settings.parameters, entry);
  }
}

// The settings of another file: a state file, or a dump.
Settings settings_from(Reader &reader, const YAML::Node &node, const std::string &folder) {
  // A path may have any bytes.
  const std::string name =
      node.IsScalar() ? node.Scalar() : reader.name(node, "a state file, or a dump");
  const std::string path =
      name.starts_with('/') || name == "-" || name.find("://") != name.npos ? name : folder + name;
  ReadSide read = read_side(path, 0, Format::by_content);
  for (const InputError &error : read.errors) {
    const std::string place = place_of(error);
    reader.add_error(
        node, "in " + read.side.source + (place.empty() ? "" : ":" + place) + ": " + error.found,
        error.expected);
  }
  return std::move(read.side.settings);
}

}  // namespace

const ParameterName *read_parameter_name(Reader &reader, const YAML::Node &node) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  const ParameterName *known = find_parameter(std::string_view(given));
  if (known == nullptr) reader.expected(node, "a parameter: " + one_of(parameter_keys(), given));
  return known;
}

std::vector<Entry> read_parameters(Reader &reader, const YAML::Node &node, const std::string &what,
                                   std::optional<bool> global) {
  std::vector<Entry> read;
  reader.entries(node, what + ": parameters and their values, for instance {stp-mode: mst}",
                 [&](const YAML::Node &key, const YAML::Node &value) {
                   const ParameterName *name = read_parameter_name(reader, key);
                   if (name == nullptr) return;
                   if (name->is_global != global.value_or(name->is_global)) {
                     reader.add_error(key,
                                      "found '" + name->key + "', a parameter of " +
                                          (name->is_global ? "the switch" : "interfaces"),
                                      name->is_global ? "it among the parameters of the switch"
                                                      : "it in a group of ports");
                   }
                   read.push_back({name->type, read_value(reader, *name, value)});
                 });
  return read;
}

Settings read_switch(Reader &reader, const YAML::Node &node, const std::string &what,
                     const std::string &folder) {
  Settings settings;
  if (!node.IsDefined() || node.IsNull()) return settings;
  if (!reader.mapping(node, what, and_keys({"from"}, switch_keys()))) return settings;
  if (node["from"]) settings = settings_from(reader, node["from"], folder);
  read_settings(reader, node, settings);
  return settings;
}

ReadSettings read_state(const std::string &text) {
  ReadSettings read;
  Reader reader;
  read_yaml(text, "a state file", reader, [&](const YAML::Node &root) {
    if (reader.mapping(root, "a state file", switch_keys())) {
      read_settings(reader, root, read.settings);
    }
  });
  read.errors = std::move(reader.errors);
  sort_errors(read.errors);
  return read;
}

std::array<WorldChange, 2> read_change(Reader &reader, const YAML::Node &node,
                                       const std::array<bool, 2> &on, SettingsPair &now) {
  std::array<WorldChange, 2> changes;
  if (!reader.mapping(node, "a change", world_keys)) return changes;
  const World world = read_world(reader, node, false);
  for (std::size_t i = 0; i < on.size(); ++i) {
    if (on[i]) check_collisions(reader, node, now[i], world);
  }
  for (std::size_t i = 0; i < on.size(); ++i) {
    if (on[i]) changes[i] = change_by(world, now[i]);
  }
  return changes;
}

void apply(const WorldChange &change, Settings &settings) {
  if (change.trunk) settings.trunk = *change.trunk;
  if (change.user_vlans) settings.user_vlans = *change.user_vlans;
  if (!change.channels.empty()) settings.channels = change.channels;
  for (const Port &port : change.ports) port_at(settings, port.index) = port;
}

}  // namespace lab
