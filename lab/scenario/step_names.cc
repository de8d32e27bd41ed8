// Reading ports, channels and records in steps and expectations.

#include <set>

#include "scenario/steps.h"

namespace lab {
namespace {

constexpr char port_example[] = "0x1000-0x1003,0x2000";

// Reads names of ports that are separated by commas.
std::vector<PortOfPair> read_named_ports(StepReader &reader, const YAML::Node &node,
                                         const std::string &what) {
  std::set<std::string> names;
  for (const Settings &settings : reader.now) {
    for (const Port &port : settings.ports) names.insert(port.name);
  }
  names.erase("");
  std::vector<PortOfPair> ports;
  const std::string text = scalar_text(node);
  for (const std::string_view part : split(text, ',')) {
    std::string name(part);
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    PortOfPair port;
    for (std::size_t side = 0; side < port.size(); ++side) {
      if (const Port *known = find_port(reader.now[side], name)) port[side] = known->index;
    }
    if (port[0] || port[1]) {
      ports.push_back(port);
    } else {
      reader.add_error(
          node, "found '" + name + "'",
          what + ": port indexes, for instance " + port_example +
              (names.empty() ? "" : ", or names: " + one_of({names.begin(), names.end()}, name)));
    }
  }
  return ports;
}

// Returns the name of a port in reports from its name or its index, or "" if it does not exist.
std::string find_reported_name(const StepReader &reader, const std::string &given) {
  const auto index = parse_number(given);
  for (const Settings &settings : reader.now) {
    const Port *port = index ? find_port(settings, *index) : find_port(settings, given);
    if (port != nullptr) return port_name(*port);
  }
  return index ? port_text(*index) : "";
}

}  // namespace

std::vector<PortOfPair> read_ports(StepReader &reader, const YAML::Node &node,
                                   const std::string &what) {
  if (node.IsScalar() && parse_ranges(node.Scalar(), UINT32_MAX).fault == RangeError::not_a_list) {
    return read_named_ports(reader, node, what);
  }
  std::vector<PortOfPair> ports;
  for (const auto &[first, last] :
       reader.ranges(node, what + ": port indexes", UINT32_MAX, port_example)) {
    std::set<uint32_t> indexes;
    for (const Settings &settings : reader.now) {
      for (const Port &port : ports_between(settings, first, last)) indexes.insert(port.index);
    }
    for (const uint32_t index : indexes) ports.push_back({index, index});
    if (indexes.empty()) {
      reader.add_error(node,
                       "port " + port_text(first) +
                           (first == last ? "" : " to " + port_text(last)) + " does not exist",
                       "a port of one of the switches");
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
  std::set<std::string> names;
  for (const Settings &settings : reader.now) {
    for (const std::string &name : {given, std::string(channel_word) + given}) {
      if (find_channel(settings, name) != nullptr) return name;
    }
    for (const Channel &channel : settings.channels) {
      const bool is_number = channel.name.starts_with(channel_word);
      names.insert(is_number ? channel.name.substr(channel_word.size()) : channel.name);
    }
  }
  reader.add_error(node, "found channel '" + given + "'",
                   names.empty() ? "a channel, but the switches have none"
                                 : "a channel of one of the switches: " +
                                       one_of({names.begin(), names.end()}, given));
  return "";
}

std::vector<ParameterRecord> read_records(StepReader &reader, const YAML::Node &node) {
  std::vector<ParameterRecord> records;
  const std::string example = "for instance [stp-mode, ifi-port-type@0x1000]";
  if (!reader.sequence(node, "a list of records, " + example)) return records;
  for (const auto &record : node) {
    const std::string given = reader.text(record, "a record");
    const std::size_t at = given.find('@');
    const Parameter *known = find_parameter(std::string_view(given).substr(0, at));
    const std::string port =
        at == given.npos ? "" : find_reported_name(reader, given.substr(at + 1));
    if (known == nullptr || known->is_global != port.empty()) {
      reader.expected(record,
                      "a parameter of the switch, or one of an interface and its port, " + example);
      continue;
    }
    records.push_back({.type = known->type, .port = port});
  }
  return records;
}

}  // namespace lab
