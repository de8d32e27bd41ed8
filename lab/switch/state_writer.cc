#include "switch/state_writer.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "switch/values.h"
#include "text/yaml.h"

namespace lab {
namespace {

// A mapping with its values as they are written.
using Pairs = std::vector<std::pair<std::string, std::string>>;

// No YAML takes a word of more than five letters for truth, nothing or a number.
std::string name_text(const std::string &name) {
  const auto is_letter = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
  };
  const bool is_plain = name.size() > 5 && std::isalpha(static_cast<unsigned char>(name[0])) != 0 &&
                        std::all_of(name.begin(), name.end(), is_letter);
  return is_plain ? name : yaml_text(name);
}

std::string inline_text(const Pairs &pairs) {
  std::string text;
  for (const auto &[key, value] : pairs) {
    text.append(text.empty() ? "" : ", ").append(key).append(": ").append(value);
  }
  return "{" + text + "}";
}

Pairs parameters_text(const std::vector<Entry> &entries) {
  Pairs pairs;
  for (const Entry &entry : entries) pairs.emplace_back(parameter_key(entry.type), written(entry));
  return pairs;
}

std::string port_lines(const Settings &settings, const Port &port) {
  static const Port usual;
  Pairs pairs;
  if (port.name.empty()) {
    pairs.emplace_back("ports", port_text(port.index));
  } else {
    pairs.emplace_back("port", name_text(port.name));
    if (port.channel == 0 || port.index != first_channel_index + port.channel) {
      pairs.emplace_back("index", port_text(port.index));
    }
  }
  if (port.channel != 0) {
    const auto channel = std::find_if(settings.channels.begin(), settings.channels.end(),
                                      [&](const Channel &of) { return of.id == port.channel; });
    const bool has_name = channel != settings.channels.end();
    pairs.emplace_back("channel",
                       has_name ? name_text(channel->name) : std::to_string(port.channel));
  }
  if (port.pod != usual.pod) pairs.emplace_back("pod", "true");
  if (!port.spanning_tree) pairs.emplace_back("spanning-tree", "false");
  if (!port.parameters.empty()) {
    pairs.emplace_back("parameters", inline_text(parameters_text(port.parameters)));
  }
  Pairs uncovered;
  for (const auto &[field, value] : port.uncovered) {
    uncovered.emplace_back(name_text(field), yaml_text(value));
  }
  if (!uncovered.empty()) pairs.emplace_back("uncovered", inline_text(uncovered));
  std::string lines;
  for (const auto &[key, value] : pairs) {
    lines.append(lines.empty() ? "  - " : "    ").append(key).append(": ").append(value) += '\n';
  }
  return lines;
}

Pairs domain_text(const Domain &domain) {
  Pairs pairs = {{"id", yaml_text(domain.id)}};
  if (domain.system_id) pairs.emplace_back("system-id", yaml_text(*domain.system_id));
  if (!domain.source.empty()) pairs.emplace_back("source", yaml_text(domain.source));
  if (!domain.peer.empty()) pairs.emplace_back("peer", yaml_text(domain.peer));
  return pairs;
}

Pairs timers_text(const Timers &timers) {
  Pairs pairs;
  for (const auto &[name, value] : timers) pairs.emplace_back(name, yaml_text(value));
  return pairs;
}

// VLANs with the same timers are written together.
std::string vlan_timers_lines(const Settings &settings) {
  std::map<Timers, Vlans> groups;
  for (const auto &[vlan, timers] : settings.vlan_timers) groups[timers].set(vlan);
  std::string lines;
  for (const auto &[timers, vlans] : groups) {
    Pairs pairs = timers_text(timers);
    pairs.insert(pairs.begin(), {"vlans", write_vlan_list(vlans)});
    lines += "  - " + inline_text(pairs) + "\n";
  }
  return lines;
}

}  // namespace

std::string state_file(const Settings &settings) {
  std::string out = "# What a switch is set to: a lab state file, which mcec-lab reads.\n";
  const auto line = [&out](const std::string &key, const std::string &value) {
    out += key + ": " + value + "\n";
  };
  if (!settings.name.empty()) line("name", yaml_text(settings.name));
  if (!settings.address.empty()) line("address", yaml_text(settings.address));
  if (!settings.spanning_tree) line("spanning-tree", "false");
  line("trunk", settings.trunk ? "true" : "false");
  if (!settings.domains.empty()) out += "domains:\n";
  for (const Domain &domain : settings.domains) {
    out += "  - " + inline_text(domain_text(domain)) + "\n";
  }
  if (!settings.timers.empty()) line("timers", inline_text(timers_text(settings.timers)));
  if (!settings.vlan_timers.empty()) out += "vlan-timers:\n" + vlan_timers_lines(settings);
  line("user-vlans", write_vlan_list(settings.user_vlans));
  if (!settings.channels.empty()) out += "channels:\n";
  for (const Channel &channel : settings.channels) {
    Pairs pairs = {{"channel", name_text(channel.name)},
                   {"id", std::to_string(channel.id)},
                   {"vlans", write_vlan_list(channel.vlans)}};
    if (channel.internal) pairs.emplace_back("internal", "true");
    out += "  - " + inline_text(pairs) + "\n";
  }
  if (!settings.ports.empty()) out += "ports:\n";
  for (const Port &port : settings.ports) out += port_lines(settings, port);
  if (!settings.parameters.empty()) out += "parameters:\n";
  for (const auto &[key, value] : parameters_text(settings.parameters)) line("  " + key, value);
  return out;
}

}  // namespace lab
