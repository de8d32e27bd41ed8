#include "switch/values.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "standin.h"
#include "switch/arrays.h"

namespace lab {
namespace {

constexpr uint32_t last_mst_instance = 4094;

// The library's record of one value.
mcecm_app_info_t report_of(uint32_t type, const Bytes &value) {
  Bytes array = build_array({{static_cast<uint16_t>(type), value}});
  void *block = nullptr;
  stp_mcec_type1_cfg_get_param_info(array.data(), &block);
  const Block<mcecm_app_info_report_t> report(static_cast<mcecm_app_info_report_t *>(block));
  standin_history_clear();
  return report ? report->records[0] : mcecm_app_info_t{};
}

std::string library_text(const Parameter &parameter, const Bytes &value) {
  return printable(report_of(parameter.type, value).param_value);
}

// --- words: numbers, or one of a few texts ---

Words find_words(const Parameter &parameter) {
  // The texts of the values that a switch can have; what the library has no text of its own for
  // takes the text of an earlier one.
  const bool is_mode = parameter.type == STP_MCEC_TYPE1_STP_MODE;
  Words words;
  for (uint32_t value = is_mode ? STP_MCEC_STP_MODE_MST : 0; value <= (is_mode ? 5 : 4); ++value) {
    words.try_emplace(key_of(library_text(parameter, word(value))), value);
  }
  return words;
}

std::string words_text(const Words &words) {
  std::string text;
  for (const auto &[key, value] : words) {
    text += (text.empty() ? "" : ", ") + key + " (" + std::to_string(value) + ")";
  }
  return text;
}

Bytes read_choice(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  return word(reader.word(node, parameter.key, value_words(parameter)));
}

std::optional<std::string> write_choice(const Parameter &parameter, const Bytes &value) {
  for (const auto &[key, known] : value_words(parameter)) {
    if (known == word_of(value)) return key;
  }
  return std::to_string(word_of(value));
}

std::string choice_help(const Parameter &parameter) {
  return words_text(value_words(parameter)) + ", or a number";
}

Bytes read_number(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  return word(reader.number(node, parameter.key));
}

std::optional<std::string> write_number(const Parameter &, const Bytes &value) {
  return std::to_string(word_of(value));
}

std::string number_help(const Parameter &) {
  return "a number";
}

// --- flags ---

const Words flag_words = {{"edge", STP_MCEC_GBL_PORT_TYPE_EDGE},
                          {"edge-bpduguard", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD},
                          {"edge-bpdufilter", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER},
                          {"network", STP_MCEC_GBL_PORT_TYPE_NETWORK},
                          {"normal", STP_MCEC_GBL_PORT_TYPE_NORMAL}};

Bytes read_flags(Reader &reader, const Parameter &, const YAML::Node &node) {
  if (!node.IsSequence()) return word(reader.word(node, "flags", flag_words));
  uint32_t value = 0;
  for (const auto &flag : node) value |= reader.word(flag, "a flag", flag_words);
  return word(value);
}

std::optional<std::string> write_flags(const Parameter &, const Bytes &value) {
  std::string text;
  uint32_t left = word_of(value);
  for (const auto &[key, flag] : flag_words) {
    if ((left & flag) == 0) continue;
    text += (text.empty() ? "" : ", ") + key;
    left &= ~flag;
  }
  return left == 0 && !text.empty() ? "[" + text + "]" : std::to_string(word_of(value));
}

std::string flags_help(const Parameter &) {
  return "a list of " + words_text(flag_words) + ", or a number";
}

// --- text ---

Bytes read_text(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  const std::string name = reader.name(node, "a region name");
  if (name.size() > parameter.length) {
    reader.expected(node, "a region name of at most " + std::to_string(parameter.length) +
                              " bytes; it has " + std::to_string(name.size()));
  }
  Bytes value(name.begin(), name.end());
  value.resize(parameter.length);
  return value;
}

// Only a name without control characters that nothing but NUL follows can be written as text.
std::optional<std::string> write_text(const Parameter &, const Bytes &value) {
  const auto end = std::find(value.begin(), value.end(), 0);
  const std::string name(value.begin(), end);
  const bool is_text = !has_controls(name) && std::count(end, value.end(), 0) == value.end() - end;
  return is_text ? std::optional(yaml_text(name)) : std::nullopt;
}

std::string text_help(const Parameter &parameter) {
  return "a text of at most " + std::to_string(parameter.length) + " bytes";
}

// --- VLANs ---

Bytes read_vlans(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  return vlan_record(read_vlan_list(reader, node, parameter.key));
}

std::string show_vlans(const Parameter &parameter, const Bytes &value) {
  const Vlans vlans = vlans_of_record(value);
  return vlans.any() ? vlan_text(vlans) : library_text(parameter, value);
}

std::optional<std::string> write_vlans(const Parameter &, const Bytes &value) {
  const Vlans vlans = vlans_of_record(value);
  return vlan_record(vlans) == value ? std::optional(write_vlan_list(vlans)) : std::nullopt;
}

std::string vlans_help(const Parameter &) {
  return "VLANs on which spanning tree is disabled: 10-20,30, or none";
}

Difference vlans_difference(const Bytes &left, const Bytes &right) {
  const Vlans a = vlans_of_record(left);
  const Vlans b = vlans_of_record(right);
  return {vlan_text(a & ~b), vlan_text(b & ~a)};
}

// --- the map of VLANs to MST instances ---

Bytes read_map(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  Bytes map(parameter.length);
  Vlans taken;
  reader.entries(
      node, "the VLANs of MST instances, for instance {1: 10-20}",
      [&](const YAML::Node &key, const YAML::Node &value) {
        const uint32_t instance = reader.number(key, "an MST instance", 0, last_mst_instance);
        const Vlans vlans = read_vlan_list(reader, value, "its VLANs");
        if ((vlans & taken).any()) {
          reader.add_error(value, "VLAN " + vlan_text(vlans & taken) + " stands in two instances",
                           "it in one");
        }
        taken |= vlans;
        for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
          if (vlans[vlan]) set_instance(map, vlan, instance);
        }
      });
  return map;
}

std::string show_map(const Parameter &, const Bytes &value) {
  return vlan_map_text(value);
}

std::optional<std::string> write_map(const Parameter &, const Bytes &value) {
  std::string text;
  for (const auto &[instance, vlans] : instances_of(value)) {
    if (instance > last_mst_instance) return std::nullopt;
    text += (text.empty() ? "" : ", ") + std::to_string(instance) + ": " + write_vlan_list(vlans);
  }
  return "{" + text + "}";
}

std::string map_help(const Parameter &) {
  return "VLANs of MST instances: {1: 10-20, 2: \"30,40\"}";
}

// Of each instance the VLANs that the other map has elsewhere.
std::string only_in(const Bytes &map, const Bytes &other) {
  std::string text;
  Vlans moved;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    moved[vlan] = instance_of(map, vlan) != instance_of(other, vlan);
  }
  std::map<uint32_t, Vlans> instances = instances_of(map);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (instance_of(map, vlan) == 0) instances[0].set(vlan);
  }
  for (const auto &[instance, vlans] : instances) {
    if ((vlans & moved).none()) continue;
    text += (text.empty() ? "" : "; ") + vlan_text(vlans & moved) + " (instance " +
            std::to_string(instance) + ")";
  }
  return text;
}

Difference map_difference(const Bytes &left, const Bytes &right) {
  return {only_in(left, right), only_in(right, left)};
}

// --- the kinds ---

struct Kind {
  Bytes (*read)(Reader &, const Parameter &, const YAML::Node &);
  // As YAML; nothing: the words do not say it all.
  std::optional<std::string> (*write)(const Parameter &, const Bytes &);
  std::string (*show)(const Parameter &, const Bytes &);
  std::string (*help)(const Parameter &);
  bool has_words = false;
  bool to_the_letter = false;
  Difference (*difference)(const Bytes &, const Bytes &) = nullptr;
};

constexpr Kind choice_kind = {read_choice, write_choice, library_text, choice_help, true};
constexpr Kind number_kind = {read_number, write_number, library_text, number_help};
constexpr Kind flags_kind = {read_flags, write_flags, library_text, flags_help};
constexpr Kind text_kind = {read_text, write_text, library_text, text_help, false, true};
constexpr Kind vlans_kind = {read_vlans, write_vlans, show_vlans,      vlans_help,
                             false,      false,       vlans_difference};
constexpr Kind map_kind = {read_map, write_map, show_map, map_help, false, false, map_difference};

const Kind &kind_of(const Parameter &parameter) {
  switch (parameter.kind) {
    case STP_MCEC_KIND_NUMBER:
      return number_kind;
    case STP_MCEC_KIND_FLAGS:
      return flags_kind;
    case STP_MCEC_KIND_TEXT:
      return text_kind;
    case STP_MCEC_KIND_VLANS:
      return vlans_kind;
    case STP_MCEC_KIND_MAP:
      return map_kind;
    default:
      return choice_kind;
  }
}

}  // namespace

Bytes word(uint32_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

uint32_t word_of(const Bytes &value) {
  uint32_t read = 0;
  for (std::size_t i = 0; i < 4; ++i) read = read << 8 | (i < value.size() ? value[i] : 0U);
  return read;
}

Bytes default_value(const Parameter &parameter) {
  const bool is_word = parameter.length == sizeof parameter.default_word;
  return is_word ? word(parameter.default_word) : Bytes(parameter.length);
}

std::string title(const Parameter &parameter) {
  return report_of(parameter.type, Bytes(parameter.length)).param_name;
}

Bytes read_value(Reader &reader, const Parameter &parameter, const YAML::Node &node) {
  if (node.IsMap() && node["bytes"].IsDefined()) {
    reader.mapping(node, "a value", {"bytes"});
    return reader.bytes(node["bytes"], "a value");
  }
  return kind_of(parameter).read(reader, parameter, node);
}

std::string display(uint32_t type, const Bytes &value) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? kind_of(*parameter).show(*parameter, value) : hex(value);
}

std::string written(const Entry &entry) {
  const Parameter *parameter = find_parameter(uint32_t{entry.type});
  std::optional<std::string> value;
  if (parameter != nullptr && entry.value.size() == parameter->length) {
    value = kind_of(*parameter).write(*parameter, entry.value);
  }
  return value ? *value : "{bytes: " + yaml_text(hex(entry.value)) + "}";
}

std::string value_help(const Parameter &parameter) {
  return kind_of(parameter).help(parameter);
}

bool same_text(std::string_view parameter, std::string_view a, std::string_view b) {
  const Parameter *known = find_parameter(parameter);
  const bool to_the_letter = known != nullptr && kind_of(*known).to_the_letter;
  return to_the_letter ? a == b : key_of(a) == key_of(b);
}

Difference difference(uint32_t type, const Bytes &left, const Bytes &right) {
  const Parameter *parameter = find_parameter(type);
  if (parameter == nullptr || kind_of(*parameter).difference == nullptr) return {};
  return kind_of(*parameter).difference(left, right);
}

const Words &value_words(const Parameter &parameter) {
  static std::map<uint16_t, Words> known;
  const auto [at, is_new] = known.try_emplace(parameter.type);
  if (is_new && kind_of(parameter).has_words) at->second = find_words(parameter);
  return at->second;
}

}  // namespace lab
