// The step `command`: a configuration command and its attributes.

#include <cstring>

#include "draimiofaf/types.h"
#include "scenario/steps.h"
#include "switch/values.h"

namespace lab {
namespace {

using Attribute = Command::Attribute;

// --- values of attributes: words in host byte order ---

Bytes host_words(const std::vector<uint32_t> &words) {
  Bytes bytes(words.size() * sizeof(uint32_t));
  std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

// Encodes a list of ranges. The second word of the header is the number of ranges.
Bytes range_list(const Ranges &ranges, std::size_t header_words) {
  std::vector<uint32_t> words(header_words);
  words[1] = uint32_t(ranges.size());
  for (const auto &[first, last] : ranges) words.insert(words.end(), {first, last});
  return host_words(words);
}

// --- keys that add an attribute to a command ---

struct AttributeKey {
  std::string key;
  // The commands that accept the key, and the attribute for each of them.
  std::vector<std::pair<uint32_t, uint32_t>> commands;
  Words words;           // empty: the value is a list of VLANs
  bool is_flag = false;  // the attribute has no bytes
};

const std::vector<AttributeKey> &attribute_keys() {
  static const std::vector<AttributeKey> keys = {
      {"mode",
       {{STP_MCEC_CMD_STP_MODE, STP_MCEC_ATTR_STP_MODE}},
       value_words(*find_parameter(uint32_t{STP_MCEC_TYPE1_STP_MODE}))},
      {"vlans", {{STP_MCEC_CMD_STP_ENDIS, STP_MCEC_ATTR_VLAN_LIST}}, {}},
      {"port-type",
       {{STP_MCEC_CMD_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE},
        {STP_MCEC_CMD_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE}},
       {{"normal", STP_MCEC_IF_PORT_MODE_NORMAL},
        {"edge-trunk", STP_MCEC_IF_PORT_MODE_EDGE_TRUNK},
        {"network", STP_MCEC_IF_PORT_MODE_NETWORK},
        {"edge", STP_MCEC_IF_PORT_MODE_EDGE}}},
      {"guard",
       {{STP_MCEC_CMD_IF_GUARD, STP_MCEC_ATTR_IF_GUARD}},
       {{"root", STP_MCEC_IF_GUARD_ROOT},
        {"loop", STP_MCEC_IF_GUARD_LOOP},
        {"none", STP_MCEC_IF_GUARD_NONE}}},
      {"simulate-pvst",
       {{STP_MCEC_CMD_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST}},
       {{"disabled", 0}},
       true},
  };
  return keys;
}

Bytes read_attribute(Reader &reader, const YAML::Node &node, const AttributeKey &key) {
  if (key.words.empty()) return range_list(read_vlan_ranges(reader, node, key.key), 2);
  const uint32_t word = reader.word(node, key.key, key.words, !key.is_flag);
  return key.is_flag ? Bytes{} : host_words({word});
}

// Reads a command: its name or its identifier.
uint32_t read_command_id(Reader &reader, const YAML::Node &value) {
  const std::string given = scalar_text(value);
  if (const CommandInfo *known = find_command(std::string_view(given))) return known->id;
  const auto id = parse_number(given);
  if (!id) {
    reader.expected(value, "a command: " + one_of(command_keys(), given) + ", or an identifier");
  }
  return id.value_or(0);
}

std::string command_text(uint32_t id) {
  const CommandInfo *known = find_command(id);
  return known != nullptr ? known->key : std::to_string(id);
}

void add_attribute(Reader &reader, const YAML::Node &node, const AttributeKey &key,
                   Command &command) {
  for (const auto &[id, attribute] : key.commands) {
    if (id != command.id) continue;
    command.attributes.push_back({attribute, read_attribute(reader, node, key)});
    return;
  }
  if (command.id == 0) return;  // the command itself is an error
  const std::vector<std::string> names =
      describe_each(key.commands, [](const auto &row) { return command_text(row.first); });
  reader.add_error(node, "found '" + key.key + "' with " + command_text(command.id),
                   "it with " + one_of(names) + " only");
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

// Reads the ports of an interface command, for each side. Ranges of indexes are used as they are
// written; a name is replaced by the index that the side has for it.
std::array<Attribute, 2> read_port_ranges(StepReader &reader, const YAML::Node &node) {
  const std::vector<PortOfPair> ports = read_ports(reader, node, "ports");
  const ParsedRanges written = parse_ranges(scalar_text(node), UINT32_MAX);
  const bool has_names = written.fault != RangeError::none;
  std::array<Attribute, 2> attributes;
  for (std::size_t side = 0; side < attributes.size(); ++side) {
    Ranges ranges = written.ranges;
    for (const PortOfPair &port : ports) {
      if (has_names && port[side]) ranges.emplace_back(*port[side], *port[side]);
    }
    attributes[side] = {STP_MCEC_ATTR_IFINDEX, range_list(ranges, 4)};
  }
  return attributes;
}

}  // namespace

std::vector<std::string> command_step_keys() {
  std::vector<std::string> keys = {"form", "ports", "attributes"};
  for (const AttributeKey &key : attribute_keys()) keys.push_back(key.key);
  return keys;
}

void read_command(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Command command{read_command_id(reader, value), true, {}};
  if (node["form"]) {
    command.positive = reader.word(node["form"], "form", {{"no", 0}, {"set", 1}}, false) != 0;
  }
  step.summary = std::string(command.positive ? "" : "no ") +
                 (find_command(command.id) != nullptr ? "" : "command ") + command_text(command.id);
  const auto summarize = [&](const std::string &key) {
    if (node[key].IsScalar()) step.summary += " " + key + " " + scalar_text(node[key]);
  };
  for (const AttributeKey &key : attribute_keys()) {
    if (!node[key.key]) continue;
    add_attribute(reader, node[key.key], key, command);
    summarize(key.key);
  }
  std::array<Command, 2> requests = {command, command};
  if (node["ports"]) {
    const std::array<Attribute, 2> ports = read_port_ranges(reader, node["ports"]);
    for (std::size_t i = 0; i < requests.size(); ++i) requests[i].attributes.push_back(ports[i]);
    summarize("ports");
  }
  if (node["attributes"]) {
    for (const Attribute &raw : read_raw_attributes(reader, node["attributes"])) {
      for (Command &request : requests) request.attributes.push_back(raw);
    }
  }
  for (std::size_t i = 0; i < requests.size(); ++i) add_operation(step, i, requests[i]);
}

}  // namespace lab
