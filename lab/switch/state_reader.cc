#include "switch/state_reader.h"

#include <algorithm>

#include "switch/names.h"
#include "switch/values.h"
#include "switch/world.h"
#include "text/yaml.h"

namespace lab {
namespace {

constexpr KeyRule<Domain> domain_rules[] = {
    {"id", [](Reader &reader, const YAML::Node &value,
              Domain &domain) { domain.id = reader.verbatim(value, "the id of a domain"); }},
    {"system-id",
     [](Reader &reader, const YAML::Node &value, Domain &domain) {
       domain.system_id = reader.verbatim(value, "the id of a system");
     }},
    {"source", [](Reader &reader, const YAML::Node &value,
                  Domain &domain) { domain.source = reader.verbatim(value, "an address"); }},
    {"peer", [](Reader &reader, const YAML::Node &value,
                Domain &domain) { domain.peer = reader.verbatim(value, "an address"); }},
};

std::vector<std::string> timer_keys() {
  std::vector<std::string> keys;
  for (const TimerDefault &timer : timer_defaults) keys.emplace_back(timer.name);
  return keys;
}

// The timers among the keys of a mapping.
Timers read_timers(Reader &reader, const YAML::Node &node) {
  Timers timers;
  for (const TimerDefault &timer : timer_defaults) {
    if (node[timer.name]) timers[timer.name] = reader.verbatim(node[timer.name], timer.name);
  }
  return timers;
}

void read_vlan_timers(Reader &reader, const YAML::Node &node, Settings &settings) {
  std::vector<std::string> keys = timer_keys();
  keys.emplace_back("vlans");
  const char *const what = "timers of VLANs";
  if (!reader.mapping(node, what, keys) || !reader.required(node, "vlans", what)) return;
  const Vlans vlans = read_vlan_list(reader, node["vlans"], "vlans");
  const Timers timers = read_timers(reader, node);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (vlans[vlan]) settings.vlan_timers[vlan] = timers;
  }
}

constexpr KeyRule<Settings> switch_rules[] = {
    {"name", [](Reader &reader, const YAML::Node &value,
                Settings &settings) { settings.name = reader.name(value, "the switch's name"); }},
    {"address",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       settings.address = reader.verbatim(value, "the switch's address");
     }},
    {"spanning-tree",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       settings.spanning_tree = reader.boolean(value, "spanning-tree");
     }},
    {"domains",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       settings.domains.clear();
       read_list(reader, value, "a list of domains", [&](const YAML::Node &domain) {
         read_mapping<Domain>(reader, domain, "a domain", domain_rules,
                              settings.domains.emplace_back());
       });
     }},
    {"timers",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       if (reader.mapping(value, "timers", timer_keys())) {
         settings.timers = read_timers(reader, value);
       }
     }},
    {"vlan-timers",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       settings.vlan_timers.clear();
       read_list(reader, value, "a list of timers of VLANs",
                 [&](const YAML::Node &timers) { read_vlan_timers(reader, timers, settings); });
     }},
    {"parameters",
     [](Reader &reader, const YAML::Node &value, Settings &settings) {
       for (const Entry &entry : read_parameters(reader, value, "parameters", true)) {
         put_entry(settings.parameters, entry);
       }
     }},
};

std::vector<std::string> keys_of_switch() {
  std::vector<std::string> keys = world_keys();
  add_keys<Settings>(keys, switch_rules);
  return keys;
}

void read_settings(Reader &reader, const YAML::Node &node, Settings &settings) {
  const World world = read_world(reader, node, true);
  check_collisions(reader, node, settings, world);
  change_by(world, settings);
  read_values<Settings>(reader, node, switch_rules, settings);
}

// The settings of another file: a state file, or a dump.
Settings read_source(Reader &reader, const YAML::Node &node, std::size_t side,
                     const std::string &folder, const ReadFrom &read_from) {
  // A path may have any bytes.
  const std::string name =
      node.IsScalar() ? node.Scalar() : reader.name(node, "a state file, or a dump");
  const std::string path =
      name.starts_with('/') || name == "-" || name.find("://") != name.npos ? name : folder + name;
  ReadSettings read = read_from(path, side);
  for (const InputError &error : read.errors) {
    const std::string place = place_of(error);
    reader.add_error(node,
                     "in " + read.source + (place.empty() ? "" : ":" + place) + ": " + error.found,
                     error.expected);
  }
  return std::move(read.settings);
}

}  // namespace

const Parameter *read_parameter_name(Reader &reader, const YAML::Node &node) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  const Parameter *known = find_parameter(std::string_view(given));
  if (known == nullptr) reader.expected(node, "a parameter: " + one_of(parameter_keys(), given));
  return known;
}

std::vector<Entry> read_parameters(Reader &reader, const YAML::Node &node, const std::string &what,
                                   std::optional<bool> global) {
  std::vector<Entry> read;
  reader.entries(node, what + ": parameters and their values, for instance {stp-mode: mst}",
                 [&](const YAML::Node &key, const YAML::Node &value) {
                   const Parameter *name = read_parameter_name(reader, key);
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

Settings read_switch(Reader &reader, const YAML::Node &node, std::size_t side,
                     const std::string &folder, const ReadFrom &read_from) {
  Settings settings;
  if (!node.IsDefined() || node.IsNull()) return settings;
  const std::string what = std::string("switch ") + switch_names.at(side);
  std::vector<std::string> keys = keys_of_switch();
  keys.emplace_back("from");
  if (!reader.mapping(node, what, keys)) return settings;
  if (node["from"]) {
    settings = read_source(reader, node["from"], side, folder, read_from);
  }
  read_settings(reader, node, settings);
  return settings;
}

bool is_state_file(std::string_view text) {
  text = without_byte_order_mark(text);
  bool is_yaml = false;
  for (std::size_t line = 0; line < text.size();) {
    const std::size_t end = std::min(text.find('\n', line), text.size());
    const std::string_view all = text.substr(line, end - line);
    line = end + 1;
    const std::size_t first = all.find_first_not_of(" \t\r");
    if (first == all.npos) continue;
    // JSON, at the beginning or behind lines of something else.
    if (all[0] == '{') return false;
    if (is_yaml) continue;
    const std::string_view word = all.substr(first, all.find_first_of(": \r", first) - first);
    is_yaml = all[first] == '#' || all.starts_with("---") ||
              all.substr(first + word.size()).starts_with(':');
    if (!is_yaml) return false;
  }
  return is_yaml;
}

ReadSettings read_state(const std::string &text) {
  ReadSettings read;
  Reader reader;
  read_yaml(text, "a state file", reader, [&](const YAML::Node &root) {
    if (reader.mapping(root, "a state file", keys_of_switch())) {
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
  if (!reader.mapping(node, "a change", world_keys())) return changes;
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
