#include <algorithm>

#include "switch/state_file.h"
#include "switch/values.h"

namespace lab {
namespace {

Domain read_domain(Reader &reader, const YAML::Node &node) {
  Domain domain;
  if (!reader.mapping(node, "a domain", {"id", "system-id", "source", "peer"})) return domain;
  if (node["id"]) domain.id = reader.verbatim(node["id"], "the id of a domain");
  if (node["system-id"]) {
    domain.system_id = reader.verbatim(node["system-id"], "the id of a system");
  }
  if (node["source"]) domain.source = reader.verbatim(node["source"], "an address");
  if (node["peer"]) domain.peer = reader.verbatim(node["peer"], "an address");
  return domain;
}

std::vector<std::string> timer_keys() {
  return describe_each(timer_defaults, [](const TimerDefault &timer) { return timer.name; });
}

// Reads the timers of a mapping, which may have other keys too.
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

std::vector<std::string> switch_keys() {
  std::vector<std::string> keys = platform_keys;
  keys.insert(keys.end(), {"name", "address", "spanning-tree", "domains", "timers", "vlan-timers",
                           "parameters"});
  return keys;
}

void read_settings_keys(Reader &reader, const YAML::Node &node, Settings &settings) {
  read_platform(reader, node, settings, false);
  if (node["name"]) settings.name = reader.name(node["name"], "the switch's name");
  if (node["address"]) {
    settings.address = reader.verbatim(node["address"], "the switch's address");
  }
  if (node["spanning-tree"]) {
    settings.spanning_tree = reader.boolean(node["spanning-tree"], "spanning-tree");
  }
  if (node["domains"]) settings.domains.clear();
  read_list(reader, node["domains"], "a list of domains", [&](const YAML::Node &domain) {
    settings.domains.push_back(read_domain(reader, domain));
  });
  if (node["timers"] && reader.mapping(node["timers"], "timers", timer_keys())) {
    settings.timers = read_timers(reader, node["timers"]);
  }
  if (node["vlan-timers"]) settings.vlan_timers.clear();
  read_list(reader, node["vlan-timers"], "a list of timers of VLANs",
            [&](const YAML::Node &timers) { read_vlan_timers(reader, timers, settings); });
  if (!node["parameters"]) return;
  for (const Entry &entry : read_parameters(reader, node["parameters"], "parameters", true)) {
    put_entry(settings.parameters, entry);
  }
}

// Reads the settings from another source: a state file, a dump or a database.
Settings read_source(Reader &reader, const YAML::Node &node, std::size_t side,
                     const std::string &folder, const ReadFrom &read_from) {
  // A path may contain any bytes: no check for UTF-8.
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
  const std::string given = scalar_text(node);
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
  std::vector<std::string> keys = switch_keys();
  keys.emplace_back("from");
  if (!reader.mapping(node, what, keys)) return settings;
  if (node["from"]) {
    settings = read_source(reader, node["from"], side, folder, read_from);
  }
  read_settings_keys(reader, node, settings);
  return settings;
}

bool is_state_file(std::string_view text) {
  bool is_yaml = false;
  for (const std::string_view line : split(without_byte_order_mark(text), '\n')) {
    const std::size_t first = line.find_first_not_of(" \t\r");
    if (first == line.npos) continue;
    // JSON, possibly after lines of other text.
    if (line[0] == '{') return false;
    if (is_yaml) continue;
    const std::size_t end = std::min(line.find_first_of(": \r", first), line.size());
    is_yaml = line[first] == '#' || line.starts_with("---") || line.substr(end).starts_with(':');
    if (!is_yaml) return false;
  }
  return is_yaml;
}

ReadSettings read_state(const std::string &text) {
  ReadSettings read;
  Reader reader;
  read_yaml(text, "a state file", reader, [&](const YAML::Node &root) {
    if (reader.mapping(root, "a state file", switch_keys())) {
      read_settings_keys(reader, root, read.settings);
    }
  });
  read.errors = std::move(reader.errors);
  sort_errors(read.errors);
  return read;
}

}  // namespace lab
