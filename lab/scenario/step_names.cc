// The ports and channels that steps and expectations name.

#include <algorithm>

#include "scenario/steps.h"

namespace lab {
namespace {

// Ports by their names, separated by commas.
std::vector<PortOfPair> read_named_ports(StepReader &reader, const YAML::Node &node,
                                         const std::string &what) {
  std::vector<PortOfPair> ports;
  const std::string text = scalar_text(node);
  for (const std::string_view part : split(text, ',')) {
    std::string name(part);
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    PortOfPair port;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < port.size(); ++i) {
      if (const Port *known = find_port(reader.now[i], name); known != nullptr) {
        port[i] = known->index;
      }
      for (const Port &known : reader.now[i].ports) {
        if (!known.name.empty()) names.push_back(known.name);
      }
    }
    if (port[0] || port[1]) {
      ports.push_back(port);
      continue;
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    reader.add_error(node, "found '" + name + "'",
                     what + ": port indexes, for instance 0x1000-0x1003,0x2000" +
                         (names.empty() ? "" : ", or names: " + one_of(names, name)));
  }
  return ports;
}

}  // namespace

std::vector<PortOfPair> read_ports(StepReader &reader, const YAML::Node &node,
                                   const std::string &what) {
  const ParsedRanges parsed = parse_ranges(node.IsScalar() ? node.Scalar() : "-", UINT32_MAX);
  if (node.IsScalar() && parsed.fault == RangeFault::no_list) {
    return read_named_ports(reader, node, what);
  }
  std::vector<PortOfPair> ports;
  for (const auto &[first, last] :
       reader.ranges(node, what + ": port indexes", UINT32_MAX, "0x1000-0x1003,0x2000")) {
    std::set<uint32_t> indexes;
    for (const Settings &settings : reader.now) {
      for (const Port &port : ports_between(settings, first, last)) indexes.insert(port.index);
    }
    for (const uint32_t index : indexes) ports.push_back({index, index});
    if (indexes.empty()) {
      reader.add_error(node,
                       "port " + port_text(first) +
                           (first == last ? "" : " to " + port_text(last)) + " does not exist",
                       "one that a switch of the scenario has");
    }
  }
  return ports;
}

PairScope scope_of(const PortOfPair &port, const SettingsPair &now) {
  PairScope scope{PairScope::Kind::of_port, "", {}};
  for (std::size_t i = 0; i < port.size(); ++i) {
    PairScope::End &end = scope.ends[i];
    end.present = port[i].has_value();
    end.port = port[i] ? *port[i] : *port[1 - i];
    const Port *known = port[i] ? find_port(now[i], *port[i]) : nullptr;
    end.port_name = known != nullptr ? port_name(*known) : port_text(end.port);
    if (known != nullptr && (scope.name.empty() || !known->name.empty())) {
      scope.name = end.port_name;
    }
  }
  return scope;
}

std::string read_channel_name(StepReader &reader, const YAML::Node &node,
                              const std::string &given) {
  std::vector<std::string> names;
  for (const Settings &settings : reader.now) {
    for (const std::string &name : {given, std::string(channel_word) + given}) {
      if (find_channel(settings, name) != nullptr) return name;
    }
    for (const Channel &channel : settings.channels) {
      const bool is_number = channel.name.starts_with(channel_word);
      names.push_back(is_number ? channel.name.substr(channel_word.size()) : channel.name);
    }
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  reader.add_error(node, "found channel '" + printable(given) + "'",
                   names.empty() ? "a channel, but no port belongs to one"
                                 : "a channel of one of the switches: " + one_of(names, given));
  return "";
}

}  // namespace lab
