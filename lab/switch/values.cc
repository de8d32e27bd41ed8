#include "switch/values.h"

#include <fmt/format.h>

#include <algorithm>

#include "draimiofaf/check.h"
#include "standin.h"
#include "switch/arrays.h"

namespace lab {
namespace {

constexpr uint32_t last_mst_instance = 4094;

const Words flag_words = {{"edge", STP_MCEC_GBL_PORT_TYPE_EDGE},
                          {"edge-bpduguard", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD},
                          {"edge-bpdufilter", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER},
                          {"network", STP_MCEC_GBL_PORT_TYPE_NETWORK},
                          {"normal", STP_MCEC_GBL_PORT_TYPE_NORMAL}};

// Returns the library's report record of a value.
mcecm_app_info_t report_of(uint16_t type, const Bytes &value) {
  Bytes array = build_array({{type, value}});
  void *block = nullptr;
  stp_mcec_type1_cfg_get_param_info(array.data(), &block);
  const Block<mcecm_app_info_report_t> report(static_cast<mcecm_app_info_report_t *>(block));
  standin_history_clear();
  return report ? report->records[0] : mcecm_app_info_t{};
}

std::string library_text(uint16_t type, const Bytes &value) {
  return printable(report_of(type, value).param_value);
}

std::string describe_words(const Words &words) {
  return join(describe_each(
      words, [](const auto &word) { return fmt::format("{} ({})", word.first, word.second); }));
}

// --- reading and writing by kind ---

Bytes read_flags(Reader &reader, const YAML::Node &node) {
  if (!node.IsSequence()) return word_value(reader.word(node, "flags", flag_words));
  uint32_t value = 0;
  for (const auto &flag : node) value |= reader.word(flag, "a flag", flag_words);
  return word_value(value);
}

std::string write_flags(uint32_t value) {
  std::vector<std::string> keys;
  uint32_t left = value;
  for (const auto &[key, flag] : flag_words) {
    if ((left & flag) != 0) keys.push_back(key);
    left &= ~flag;
  }
  return left == 0 && !keys.empty() ? "[" + join(keys) + "]" : std::to_string(value);
}

std::string write_choice(const Parameter &parameter, uint32_t value) {
  for (const auto &[key, known] : value_words(parameter)) {
    if (known == value) return key;
  }
  return std::to_string(value);
}

Bytes read_text(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  const std::string name = reader.name(node, "a region name");
  if (name.size() > parameter.length) {
    reader.expected(node, fmt::format("a region name of at most {} bytes; it has {}",
                                      parameter.length, name.size()));
  }
  Bytes value(name.begin(), name.end());
  value.resize(parameter.length);
  return value;
}

// Returns nullopt for a name with control characters or with other bytes than NUL after its end.
std::optional<std::string> write_text(const Bytes &value) {
  const auto end = std::find(value.begin(), value.end(), 0);
  const std::string name(value.begin(), end);
  const bool is_text = !has_controls(name) && std::count(end, value.end(), 0) == value.end() - end;
  return is_text ? std::optional(yaml_text(name)) : std::nullopt;
}

Bytes read_map(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  Bytes map(parameter.length);
  Vlans seen;
  reader.entries(
      node, "the VLANs of MST instances, for instance {1: 10-20}",
      [&](const YAML::Node &key, const YAML::Node &value) {
        const uint32_t instance = reader.number(key, "an MST instance", 0, last_mst_instance);
        const Vlans vlans = read_vlan_list(reader, value, "its VLANs");
        if ((vlans & seen).any()) {
          reader.add_error(value, "found VLAN " + vlan_text(vlans & seen) + " in two instances",
                           "it in one");
        }
        seen |= vlans;
        for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
          if (vlans[vlan]) set_instance(map, vlan, instance);
        }
      });
  return map;
}

std::optional<std::string> write_map(const Bytes &map) {
  std::vector<std::string> texts;
  for (const auto &[instance, vlans] : instances_of(map)) {
    if (instance > last_mst_instance) return std::nullopt;
    texts.push_back(fmt::format("{}: {}", instance, write_vlan_list(vlans)));
  }
  return "{" + join(texts) + "}";
}

std::string display_map(const Bytes &map) {
  std::vector<std::string> texts;
  for (const auto &[instance, vlans] : instances_of(map)) {
    texts.push_back(fmt::format("{}: {}", instance, vlan_text(vlans)));
  }
  return texts.empty() ? "all VLANs in instance 0" : join(texts, "; ");
}

// Describes the VLANs of a map that are in another instance in the other map.
std::string only_in(const Bytes &map, const Bytes &other) {
  std::map<uint32_t, Vlans> moved;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    const uint32_t instance = instance_of(map, vlan);
    if (instance != instance_of(other, vlan)) moved[instance].set(vlan);
  }
  std::vector<std::string> texts;
  for (const auto &[instance, vlans] : moved) {
    texts.push_back(fmt::format("{} (instance {})", vlan_text(vlans), instance));
  }
  return join(texts, "; ");
}

// Returns nullopt if reading the text would not return the same bytes.
std::optional<std::string> write_value(const Parameter &parameter, const Bytes &value) {
  if (value.size() != parameter.length) return std::nullopt;
  switch (parameter.kind) {
    case STP_MCEC_KIND_FLAGS:
      return write_flags(word_of(value));
    case STP_MCEC_KIND_TEXT:
      return write_text(value);
    case STP_MCEC_KIND_VLANS: {
      const Vlans vlans = vlans_of_record(value);
      return vlan_record(vlans) == value ? std::optional(write_vlan_list(vlans)) : std::nullopt;
    }
    case STP_MCEC_KIND_MAP:
      return write_map(value);
    default:
      return write_choice(parameter, word_of(value));
  }
}

}  // namespace

Bytes word_value(uint32_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

uint32_t word_of(const Bytes &value) {
  uint32_t word = 0;
  for (std::size_t i = 0; i < 4; ++i) word = word << 8 | (i < value.size() ? value[i] : 0U);
  return word;
}

Bytes default_value(const Parameter &parameter) {
  const bool is_word = parameter.length == sizeof parameter.default_word;
  return is_word ? word_value(parameter.default_word) : Bytes(parameter.length);
}

std::string title(const Parameter &parameter) {
  return report_of(parameter.type, Bytes(parameter.length)).param_name;
}

Bytes read_value(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  if (node.IsMap() && node["bytes"].IsDefined()) {
    reader.mapping(node, "a value", {"bytes"});
    return reader.bytes(node["bytes"], "a value");
  }
  switch (parameter.kind) {
    case STP_MCEC_KIND_NUMBER:
      return word_value(reader.number(node, parameter.key));
    case STP_MCEC_KIND_FLAGS:
      return read_flags(reader, node);
    case STP_MCEC_KIND_TEXT:
      return read_text(reader, parameter, node);
    case STP_MCEC_KIND_VLANS:
      return vlan_record(read_vlan_list(reader, node, parameter.key));
    case STP_MCEC_KIND_MAP:
      return read_map(reader, parameter, node);
    default:
      return word_value(reader.word(node, parameter.key, value_words(parameter)));
  }
}

std::string display(uint32_t type, const Bytes &value) {
  const Parameter *parameter = find_parameter(type);
  if (parameter == nullptr) return hex(value);
  if (parameter->kind == STP_MCEC_KIND_MAP) return display_map(value);
  const bool has_vlans = parameter->kind == STP_MCEC_KIND_VLANS && vlans_of_record(value).any();
  return has_vlans ? vlan_text(vlans_of_record(value)) : library_text(parameter->type, value);
}

std::string written(const Entry &entry) {
  const Parameter *parameter = find_parameter(uint32_t{entry.type});
  const auto value = parameter != nullptr ? write_value(*parameter, entry.value) : std::nullopt;
  return value ? *value : "{bytes: " + yaml_text(hex(entry.value)) + "}";
}

std::string value_help(const Parameter &parameter) {
  switch (parameter.kind) {
    case STP_MCEC_KIND_NUMBER:
      return "a number";
    case STP_MCEC_KIND_FLAGS:
      return "a list of " + describe_words(flag_words) + ", or a number";
    case STP_MCEC_KIND_TEXT:
      return fmt::format("a text of at most {} bytes", parameter.length);
    case STP_MCEC_KIND_VLANS:
      return "VLANs on which spanning tree is disabled: 10-20,30, or none";
    case STP_MCEC_KIND_MAP:
      return "VLANs of MST instances: {1: 10-20, 2: \"30,40\"}";
    default:
      return describe_words(value_words(parameter)) + ", or a number";
  }
}

bool is_same_text(std::string_view parameter, std::string_view a, std::string_view b) {
  const Parameter *known = find_parameter(parameter);
  const bool is_name = known != nullptr && known->kind == STP_MCEC_KIND_TEXT;
  return is_name ? a == b : key_of(a) == key_of(b);
}

Difference difference(uint32_t type, const Bytes &left, const Bytes &right) {
  const Parameter *parameter = find_parameter(type);
  if (parameter != nullptr && parameter->kind == STP_MCEC_KIND_VLANS) {
    const Vlans a = vlans_of_record(left);
    const Vlans b = vlans_of_record(right);
    return {vlan_text(a & ~b), vlan_text(b & ~a)};
  }
  const bool is_map = parameter != nullptr && parameter->kind == STP_MCEC_KIND_MAP;
  return is_map ? Difference{only_in(left, right), only_in(right, left)} : Difference{};
}

// Several values share a text; the first of them gets the word.
const Words &value_words(const Parameter &parameter) {
  static std::map<uint16_t, Words> known;
  const auto [at, is_new] = known.try_emplace(parameter.type);
  if (!is_new || parameter.kind != STP_MCEC_KIND_CHOICE) return at->second;
  const bool is_mode = parameter.type == STP_MCEC_TYPE1_STP_MODE;
  const uint32_t first = is_mode ? STP_MCEC_STP_MODE_MST : 0;
  for (uint32_t value = first; value <= (is_mode ? STP_MCEC_STP_MODE_RAPID_PVST : 4); ++value) {
    at->second.try_emplace(key_of(library_text(parameter.type, word_value(value))), value);
  }
  return at->second;
}

}  // namespace lab
