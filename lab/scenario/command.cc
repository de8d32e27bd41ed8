// The step `command`: a configuration command, and the attributes that a scenario may give it.

#include <algorithm>
#include <cstring>

#include "draimiofaf/types.h"
#include "scenario/steps.h"
#include "switch/values.h"

namespace lab {
namespace {

using Attribute = Command::Attribute;

const Words port_type_words = {{"normal", STP_MCEC_IF_PORT_MODE_NORMAL},
                               {"edge-trunk", STP_MCEC_IF_PORT_MODE_EDGE_TRUNK},
                               {"network", STP_MCEC_IF_PORT_MODE_NETWORK},
                               {"edge", STP_MCEC_IF_PORT_MODE_EDGE}};
const Words guard_words = {{"root", STP_MCEC_IF_GUARD_ROOT},
                           {"loop", STP_MCEC_IF_GUARD_LOOP},
                           {"none", STP_MCEC_IF_GUARD_NONE}};

// --- bytes of attributes: words in the byte order of the machine ---

Bytes host_words(const std::vector<uint32_t> &words) {
  Bytes made(words.size() * sizeof(uint32_t));
  if (!made.empty()) std::memcpy(made.data(), words.data(), made.size());
  return made;
}

// A list of ranges behind a header of some words, of which the second is their number.
Bytes range_list(const Ranges &ranges, std::size_t header_words) {
  std::vector<uint32_t> words(header_words);
  words[1] = uint32_t(ranges.size());
  for (const auto &[first, last] : ranges) words.insert(words.end(), {first, last});
  return host_words(words);
}

// --- the keys that give a command an attribute ---

struct AttributeKey {
  const char *key;
  // The commands that take it, and the attribute that each takes it as.
  std::vector<std::pair<uint32_t, uint32_t>> commands;
  Bytes (*read)(Reader &reader, const YAML::Node &node);
};

Bytes read_mode(Reader &reader, const YAML::Node &node) {
  const ParameterName &mode = *find_parameter(uint32_t{STP_MCEC_TYPE1_STP_MODE});
  return host_words({reader.word(node, "mode", value_words(mode))});
}

Bytes read_vlan_list(Reader &reader, const YAML::Node &node) {
  constexpr std::size_t header_words = 2;
  const bool is_list = node.IsScalar() && parse_vlans(node.Scalar()).fault == RangeFault::none;
  // The ranges as they are written: the library is to see them so.
  const Ranges ranges = is_list ? parse_vlans(node.Scalar()).ranges
                                : ranges_of(read_vlan_list(reader, node, "vlans"));
  return range_list(ranges, header_words);
}

Bytes read_port_type(Reader &reader, const YAML::Node &node) {
  return host_words({reader.word(node, "port-type", port_type_words)});
}

Bytes read_guard(Reader &reader, const YAML::Node &node) {
  return host_words({reader.word(node, "guard", guard_words)});
}

Bytes read_simulation(Reader &reader, const YAML::Node &node) {
  reader.word(node, "simulate-pvst", {{"disabled", 0}}, false);
  return {};
}

const std::vector<AttributeKey> attribute_keys = {
    {"mode", {{STP_MCEC_CMD_STP_MODE, STP_MCEC_ATTR_STP_MODE}}, read_mode},
    {"vlans", {{STP_MCEC_CMD_STP_ENDIS, STP_MCEC_ATTR_VLAN_LIST}}, read_vlan_list},
    {"port-type",
     {{STP_MCEC_CMD_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE},
      {STP_MCEC_CMD_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE}},
     read_port_type},
    {"guard", {{STP_MCEC_CMD_IF_GUARD, STP_MCEC_ATTR_IF_GUARD}}, read_guard},
    {"simulate-pvst",
     {{STP_MCEC_CMD_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST}},
     read_simulation},
};

// A command by its name or its identifier.
uint32_t read_id(Reader &reader, const YAML::Node &value) {
  const std::string given = value.IsScalar() ? value.Scalar() : "";
  if (const CommandName *known = find_command(std::string_view(given)); known != nullptr) {
    return known->id;
  }
  const auto id = parse_number(given);
  if (!id) {
    reader.expected(value, "a command: " + one_of(command_keys(), given) + ", or an identifier");
  }
  return id.value_or(0);
}

std::string command_text(uint32_t id) {
  const CommandName *known = find_command(id);
  return known != nullptr ? known->key : std::to_string(id);
}

void add_attribute(Reader &reader, const YAML::Node &node, const AttributeKey &key,
                   Command &command) {
  std::vector<std::string> takers;
  for (const auto &[taker, attribute] : key.commands) {
    if (taker == command.id)
      return command.attributes.push_back({attribute, key.read(reader, node)});
    takers.push_back(command_text(taker));
  }
  if (command.id == 0) return;  // the command itself is an error
  reader.add_error(node,
                   std::string("'") + key.key + "' does not belong to " + command_text(command.id),
                   "it with " + one_of(takers) + " only");
}

std::vector<Attribute> read_raw_attributes(Reader &reader, const YAML::Node &node) {
  std::vector<Attribute> attributes;
  if (!reader.sequence(node, "a list of attributes, {id, word or bytes}")) return attributes;
  for (const auto &raw : node) {
    if (!reader.mapping(raw, "an attribute", {"id", "word", "bytes"})) continue;
    if (!reader.required(raw, "id", "an attribute")) continue;
    const uint32_t id = reader.number(raw["id"], "the attribute's id");
    if (raw["word"].IsDefined() == raw["bytes"].IsDefined()) {
      reader.expected(raw, "an attribute with either a word or bytes");
      continue;
    }
    attributes.push_back({id, raw["word"] ? host_words({reader.number(raw["word"], "a word")})
                                          : reader.bytes(raw["bytes"], "an attribute")});
  }
  return attributes;
}

// The ranges of an interface command. Indexes stay as they are written; of names, each side has its
// own index.
std::array<Bytes, 2> read_port_ranges(StepReader &reader, const YAML::Node &node) {
  constexpr std::size_t header_words = 4;
  const std::vector<PortOfPair> ports = read_ports(reader, node, "ports");
  const ParsedRanges written = parse_ranges(scalar_text(node), UINT32_MAX);
  std::array<Bytes, 2> lists;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    Ranges ranges = written.ranges;
    for (const PortOfPair &port : ports) {
      if (written.fault != RangeFault::none && port[i]) ranges.emplace_back(*port[i], *port[i]);
    }
    lists[i] = range_list(ranges, header_words);
  }
  return lists;
}

}  // namespace

std::vector<std::string> command_step_keys() {
  std::vector<std::string> keys = {"form", "ports", "attributes"};
  for (const AttributeKey &key : attribute_keys) keys.emplace_back(key.key);
  return keys;
}

void read_command(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Command command{read_id(reader, value), true, {}};
  if (node["form"]) {
    command.positive = reader.word(node["form"], "form", {{"no", 0}, {"set", 1}}, false) != 0;
  }
  step.summary = (command.positive ? "" : "no ") +
                 (find_command(command.id) != nullptr ? "" : std::string("command ")) +
                 command_text(command.id);
  const auto summarize = [&](const char *key) {
    if (node[key].IsScalar()) step.summary += std::string(" ") + key + " " + scalar_text(node[key]);
  };
  for (const AttributeKey &key : attribute_keys) {
    if (!node[key.key]) continue;
    add_attribute(reader, node[key.key], key, command);
    summarize(key.key);
  }
  std::optional<std::array<Bytes, 2>> ports;
  if (node["ports"]) {
    ports = read_port_ranges(reader, node["ports"]);
    summarize("ports");
  }
  std::vector<Attribute> raw;
  if (node["attributes"]) raw = read_raw_attributes(reader, node["attributes"]);
  Requests requests;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (!step.on[i]) continue;
    Command asked = command;
    if (ports) asked.attributes.push_back({STP_MCEC_ATTR_IFINDEX, (*ports)[i]});
    asked.attributes.insert(asked.attributes.end(), raw.begin(), raw.end());
    requests[i] = Request{false, std::move(asked)};
  }
  step.requests.push_back(std::move(requests));
}

}  // namespace lab
