#include "switch/state_reader.h"
#include "switch/world.h"
#include "text/yaml.h"

namespace lab {
namespace {

constexpr uint32_t most_ports = 100000;

ChannelRef read_channel(Reader &reader, const YAML::Node &node) {
  const std::string given = reader.name(node, "a channel: its number or its name");
  const auto number = parse_number(given);
  if (number) return {*number != 0 ? "channel " + std::to_string(*number) : "", *number};
  if (given.empty() || printable(given) != given) {
    reader.expected(node, "a channel: its number or its name");
  }
  return {printable(given), 0};
}

constexpr KeyRule<ChannelGroup> channel_rules[] = {
    {"channel", [](Reader &reader, const YAML::Node &value,
                   ChannelGroup &group) { group.channel = read_channel(reader, value); }},
    {"id", [](Reader &reader, const YAML::Node &value,
              ChannelGroup &group) { group.channel.id = reader.number(value, "id", 1); }},
    {"internal", [](Reader &reader, const YAML::Node &value,
                    ChannelGroup &group) { group.internal = reader.boolean(value, "internal"); }},
    {"vlans", [](Reader &reader, const YAML::Node &value,
                 ChannelGroup &group) { group.vlans = read_vlan_list(reader, value, "vlans"); }},
};

ChannelGroup read_channel_group(Reader &reader, const YAML::Node &node) {
  ChannelGroup group;
  const char *const what = "a channel";
  const bool is_read = read_mapping<ChannelGroup>(reader, node, what, channel_rules, group);
  if (is_read) reader.required(node, "channel", what);
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

constexpr KeyRule<PortGroup> port_rules[] = {
    {"ports", [](Reader &reader, const YAML::Node &value,
                 PortGroup &group) { group.indexes = read_indexes(reader, value, "ports"); }},
    {"port",
     [](Reader &reader, const YAML::Node &value, PortGroup &group) {
       group.name = printable(reader.name(value, "the name of a port"));
       const bool is_list = parse_ranges(group.name, UINT32_MAX).fault != RangeFault::no_list;
       if (is_list || group.name.empty()) {
         reader.expected(value, "the name of a port; indexes go with 'ports'");
       }
     }},
    {"index",
     [](Reader &reader, const YAML::Node &value, PortGroup &group) {
       const uint32_t index = reader.number(value, "index");
       group.indexes = {{index, index}};
     }},
    {"channel", [](Reader &reader, const YAML::Node &value,
                   PortGroup &group) { group.channel = read_channel(reader, value); }},
    {"member", [](Reader &reader, const YAML::Node &value,
                  PortGroup &group) { group.channel = read_channel(reader, value); }},
    {"pod", [](Reader &reader, const YAML::Node &value,
               PortGroup &group) { group.pod = reader.boolean(value, "pod"); }},
    {"spanning-tree",
     [](Reader &reader, const YAML::Node &value, PortGroup &group) {
       group.spanning_tree = reader.boolean(value, "spanning-tree");
     }},
    {"uncovered",
     [](Reader &reader, const YAML::Node &value, PortGroup &group) {
       reader.entries(
           value, "names and texts", [&](const YAML::Node &name, const YAML::Node &text) {
             group.uncovered[reader.verbatim(name, "a name")] = reader.verbatim(text, "a text");
           });
     }},
    // Last: a change has none.
    {"parameters",
     [](Reader &reader, const YAML::Node &value, PortGroup &group) {
       group.parameters = read_parameters(reader, value, "parameters", false);
     }},
};

// The ports are given by their indexes, or one by its name.
void check_ports_of_group(Reader &reader, const YAML::Node &node, PortGroup &group) {
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
    reader.add_error(node["member"], "found 'member' together with 'channel'", "one of them");
  }
}

PortGroup read_port_group(Reader &reader, const YAML::Node &node, bool with_parameters) {
  PortGroup group;
  const KeyRules<PortGroup> rules(port_rules);
  if (read_mapping(reader, node, "a group of ports",
                   with_parameters ? rules : rules.first(rules.size() - 1), group)) {
    check_ports_of_group(reader, node, group);
  }
  return group;
}

template <bool with_parameters>
void read_port_groups(Reader &reader, const YAML::Node &value, World &world) {
  read_list(reader, value, "a list of groups of ports", [&](const YAML::Node &group) {
    world.ports.push_back(read_port_group(reader, group, with_parameters));
  });
}

constexpr KeyRule<World> world_rules[] = {
    {"trunk", [](Reader &reader, const YAML::Node &value,
                 World &world) { world.trunk = reader.boolean(value, "trunk"); }},
    {"user-vlans",
     [](Reader &reader, const YAML::Node &value, World &world) {
       world.user_vlans = read_vlan_list(reader, value, "user-vlans");
     }},
    {"channels",
     [](Reader &reader, const YAML::Node &value, World &world) {
       read_list(reader, value, "a list of channels", [&](const YAML::Node &channel) {
         world.channels.push_back(read_channel_group(reader, channel));
       });
     }},
    {"internal-channels",
     [](Reader &reader, const YAML::Node &value, World &world) {
       read_list(reader, value, "a list of channels, for instance [10, 11]",
                 [&](const YAML::Node &channel) {
                   world.channels.push_back({read_channel(reader, channel), true, {}});
                 });
     }},
};
// Of a switch, and of a change, whose ports have no parameters.
constexpr KeyRule<World> port_rule_of_switch[] = {{"ports", read_port_groups<true>}};
constexpr KeyRule<World> port_rule_of_change[] = {{"ports", read_port_groups<false>}};

}  // namespace

std::vector<std::string> world_keys() {
  std::vector<std::string> keys;
  add_keys<World>(keys, world_rules);
  add_keys<World>(keys, port_rule_of_switch);
  return keys;
}

World read_world(Reader &reader, const YAML::Node &node, bool with_parameters) {
  World world;
  read_values<World>(reader, node, world_rules, world);
  read_values<World>(reader, node, with_parameters ? port_rule_of_switch : port_rule_of_change,
                     world);
  return world;
}

}  // namespace lab
