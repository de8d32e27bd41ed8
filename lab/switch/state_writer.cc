#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "switch/state_file.h"
#include "switch/values.h"

namespace lab {
namespace {

// The entries of a mapping, "key: value".
struct Mapping {
  std::vector<std::string> entries;

  void add(const std::string &key, const std::string &value) {
    entries.push_back(fmt::format("{}: {}", key, value));
  }

  // Omits an empty text.
  void add_text(const std::string &key, const std::string &text) {
    if (!text.empty()) add(key, yaml_text(text));
  }

  std::string in_braces() const { return "{" + join(entries) + "}"; }
};

// No YAML version parses a word of more than five letters as a boolean, null or a number.
std::string name_text(const std::string &name) {
  const auto is_letter = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
  const bool is_plain = name.size() > 5 && std::isalpha(static_cast<unsigned char>(name[0])) != 0 &&
                        std::all_of(name.begin(), name.end(), is_letter);
  return is_plain ? name : yaml_text(name);
}

Mapping map_parameters(const std::vector<Entry> &entries) {
  Mapping mapping;
  for (const Entry &entry : entries) mapping.add(parameter_key(entry.type), written(entry));
  return mapping;
}

Mapping map_port(const Settings &settings, const Port &port) {
  Mapping mapping;
  if (port.name.empty()) {
    mapping.add("ports", port_text(port.index));
  } else {
    mapping.add("port", name_text(port.name));
    if (port.channel == 0 || port.index != first_channel_index + port.channel) {
      mapping.add("index", port_text(port.index));
    }
  }
  if (port.channel != 0) {
    const Channel *channel = find_channel(settings, port.channel);
    mapping.add("channel",
                channel != nullptr ? name_text(channel->name) : std::to_string(port.channel));
  }
  if (port.pod) mapping.add("pod", "true");
  if (!port.spanning_tree) mapping.add("spanning-tree", "false");
  if (!port.parameters.empty()) {
    mapping.add("parameters", map_parameters(port.parameters).in_braces());
  }
  Mapping uncovered;
  for (const auto &[field, value] : port.uncovered) {
    uncovered.add(name_text(field), yaml_text(value));
  }
  if (!port.uncovered.empty()) mapping.add("uncovered", uncovered.in_braces());
  return mapping;
}

std::string write_domain(const Domain &domain) {
  Mapping mapping;
  mapping.add("id", yaml_text(domain.id));
  if (domain.system_id) mapping.add("system-id", yaml_text(*domain.system_id));
  mapping.add_text("source", domain.source);
  mapping.add_text("peer", domain.peer);
  return mapping.in_braces();
}

std::string write_channel(const Channel &channel) {
  Mapping mapping;
  mapping.add("channel", name_text(channel.name));
  mapping.add("id", std::to_string(channel.id));
  mapping.add("vlans", write_vlan_list(channel.vlans));
  if (channel.internal) mapping.add("internal", "true");
  return mapping.in_braces();
}

// Formats timers of the switch, or of some VLANs.
std::string write_timers(const Timers &timers, const Vlans &vlans = {}) {
  Mapping mapping;
  if (vlans.any()) mapping.add("vlans", write_vlan_list(vlans));
  for (const auto &[name, value] : timers) mapping.add(name, yaml_text(value));
  return mapping.in_braces();
}

template <class Items, class Write>
void add_list(Mapping &root, const char *key, const Items &items, Write write) {
  std::string text;
  for (const auto &item : items) text += "\n  - " + write(item);
  if (!text.empty()) root.entries.push_back(key + (":" + text));
}

}  // namespace

std::string write_state(const Settings &settings) {
  Mapping root;
  root.add_text("name", settings.name);
  root.add_text("address", settings.address);
  if (!settings.spanning_tree) root.add("spanning-tree", "false");
  root.add("trunk", settings.trunk ? "true" : "false");
  add_list(root, "domains", settings.domains, write_domain);
  if (!settings.timers.empty()) root.add("timers", write_timers(settings.timers));
  std::map<Timers, Vlans> groups;  // VLANs with the same timers share an entry
  for (const auto &[vlan, timers] : settings.vlan_timers) groups[timers].set(vlan);
  add_list(root, "vlan-timers", groups,
           [](const auto &group) { return write_timers(group.first, group.second); });
  root.add("user-vlans", write_vlan_list(settings.user_vlans));
  add_list(root, "channels", settings.channels, write_channel);
  add_list(root, "ports", settings.ports,
           [&](const Port &port) { return join(map_port(settings, port).entries, "\n    "); });
  const Mapping parameters = map_parameters(settings.parameters);
  if (!parameters.entries.empty()) {
    root.entries.push_back("parameters:\n  " + join(parameters.entries, "\n  "));
  }
  return "# Settings of a switch: a state file of mcec-lab.\n" + join(root.entries, "\n") + "\n";
}

}  // namespace lab
