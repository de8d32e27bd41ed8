#include "vocabulary.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>

#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "standin.h"

namespace lab {
namespace {

template <class Named, class Match>
const Named *find_in(const std::vector<Named> &all, Match match) {
  const auto found = std::find_if(all.begin(), all.end(), match);
  return found != all.end() ? &*found : nullptr;
}

// The library's record of one value.
mcecm_app_info_t report_of(uint16_t type, const Bytes &value) {
  Bytes array = build_array({{type, value}});
  void *block = nullptr;
  stp_mcec_type1_cfg_get_param_info(array.data(), &block);
  const Block<mcecm_app_info_report_t> report(static_cast<mcecm_app_info_report_t *>(block));
  standin_history_clear();
  return report ? report->records[0] : mcecm_app_info_t{};
}

// "VLANs of instance 1: 10-20; of instance 2: 30". VLANs in instance 0 are not told.
std::string vlan_map_text(const Bytes &map) {
  std::map<uint32_t, Ranges> instances;
  for (uint32_t vlan = 0; vlan < map.size() / 2; ++vlan) {
    const uint32_t instance = map[2 * vlan] * 256U + map[2 * vlan + 1];
    if (instance != 0) instances[instance].emplace_back(vlan, vlan);
  }
  if (instances.empty()) return "all VLANs in instance 0";
  std::string text;
  for (const auto &[instance, ranges] : instances) {
    if (!text.empty()) text += "; ";
    text += std::to_string(instance) + ": " + vlan_text(vlan_record(ranges));
  }
  return text;
}

}  // namespace

std::string key_of(std::string_view name) {
  std::string key(name);
  for (char &c : key) {
    c = c == '_' || c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return key;
}

const std::vector<ParameterName> &parameters() {
  enum Scope { INTERFACE, GLOBAL };
  static const std::vector<ParameterName> all = {
#define LAB_ROW(name, type, scope, length, code) \
  {type, key_of(#name), "STP_MCEC_TYPE1_" #name, scope == GLOBAL, length, code},
      STP_MCEC_TYPE1_PARAMETERS(LAB_ROW)
#undef LAB_ROW
  };
  return all;
}

const ParameterName *find_parameter(std::string_view key) {
  return find_in(parameters(), [=](const ParameterName &p) {
    return p.key == key_of(key) || key_of(p.enumerator) == key_of(key);
  });
}

const ParameterName *find_parameter(uint32_t type) {
  return find_in(parameters(), [=](const ParameterName &p) { return p.type == type; });
}

const std::vector<CommandName> &commands() {
  enum Gate { UNGATED, GATED };
  static const std::vector<CommandName> all = {
#define LAB_ROW(name, id, extractor, gate) \
  {id, key_of(#name), "STP_MCEC_CMD_" #name, #extractor, gate == GATED},
      STP_MCEC_COMMANDS(LAB_ROW)
#undef LAB_ROW
  };
  return all;
}

const CommandName *find_command(std::string_view key) {
  return find_in(commands(), [=](const CommandName &c) {
    return c.key == key_of(key) || key_of(c.enumerator) == key_of(key);
  });
}

const CommandName *find_command(uint32_t id) {
  return find_in(commands(), [=](const CommandName &c) { return c.id == id; });
}

std::string parameter_key(uint32_t type) {
  const ParameterName *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->key : std::to_string(type);
}

const std::vector<std::pair<std::string, uint32_t>> &results() {
  static const std::vector<std::pair<std::string, uint32_t>> all = [] {
    std::vector<std::pair<std::string, uint32_t>> names = {
        {"STP_MCEC_RESULT_NO_BLOCK", STP_MCEC_RESULT_NO_BLOCK},
        {"STP_MCEC_RESULT_PVRST_REFUSED", STP_MCEC_RESULT_PVRST_REFUSED},
#define LAB_ROW(name, code) {"STP_MCEC_" #name, code},
        STP_MCEC_RESULT_CODES(LAB_ROW)
#undef LAB_ROW
    };
    for (const ParameterName &parameter : parameters()) {
      const std::string suffix = parameter.enumerator.substr(std::strlen("STP_MCEC_"));
      names.emplace_back("STP_MCEC_ERR_" + suffix,
                         stp_mcec_get_type1_cfg_compat_chk_errcode(parameter.type));
    }
    return names;
  }();
  return all;
}

std::string result_name(uint32_t code) {
  if (code == 0) return "agree";
  for (const auto &[name, known] : results()) {
    if (known == code) return name;
  }
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", code);
  return text;
}

std::optional<uint32_t> find_result(std::string_view name) {
  const std::string key = key_of(name);
  if (key == "agree" || key == "ok") return 0;
  for (const auto &[full, code] : results()) {
    const std::string known = key_of(full);
    for (const char *prefix : {"", "stp-mcec-", "stp-mcec-err-", "stp-mcec-result-"}) {
      if (known.starts_with(prefix) && known.substr(std::strlen(prefix)) == key) return code;
    }
  }
  return parse_number(name);
}

Bytes word(uint32_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

uint32_t word_of(const Bytes &value) {
  uint32_t read = 0;
  for (std::size_t i = 0; i < 4; ++i) read = read << 8 | (i < value.size() ? value[i] : 0U);
  return read;
}

std::map<std::string, uint32_t> value_words(uint16_t type) {
  const ParameterName *parameter = find_parameter(type);
  std::map<std::string, uint32_t> words;
  if (parameter == nullptr || parameter->length != 4) return words;
  if (type == STP_MCEC_TYPE1_MST_REGION_REVISION || type == STP_MCEC_TYPE1_GBL_PORT_TYPE) {
    return words;
  }
  std::vector<uint32_t> values = {0, 1, 2, 3, 4};
  if (type == STP_MCEC_TYPE1_STP_MODE) {
    values = {STP_MCEC_STP_MODE_MST, STP_MCEC_STP_MODE_RAPID_PVST};
  }
  for (const uint32_t value : values) {
    words.try_emplace(key_of(report_of(type, word(value)).param_value), value);
  }
  return words;
}

std::string display(uint16_t type, const Bytes &value) {
  const ParameterName *parameter = find_parameter(type);
  if (parameter == nullptr) return hex(value);
  if (type == STP_MCEC_TYPE1_STP_ENDIS) {
    const std::string vlans = vlan_text(value);
    return vlans.empty() ? report_of(type, value).param_value : vlans;
  }
  if (type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return vlan_map_text(value);
  return printable(report_of(type, value).param_value);
}

bool same_text(std::string_view parameter, std::string_view a, std::string_view b) {
  const ParameterName *known = find_parameter(parameter);
  const bool is_name = known != nullptr && known->type == STP_MCEC_TYPE1_MST_REGION_NAME;
  return is_name ? a == b : key_of(a) == key_of(b);
}

const std::map<std::string, uint32_t> &flag_words() {
  static const std::map<std::string, uint32_t> words = {
      {"edge", STP_MCEC_GBL_PORT_TYPE_EDGE},
      {"edge-bpduguard", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD},
      {"edge-bpdufilter", STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER},
      {"network", STP_MCEC_GBL_PORT_TYPE_NETWORK},
      {"normal", STP_MCEC_GBL_PORT_TYPE_NORMAL}};
  return words;
}

std::string value_help(uint16_t type) {
  std::string text;
  for (const auto &[key, value] :
       type == STP_MCEC_TYPE1_GBL_PORT_TYPE ? flag_words() : value_words(type)) {
    text += (text.empty() ? "" : ", ") + key + " (" + std::to_string(value) + ")";
  }
  switch (type) {
    case STP_MCEC_TYPE1_STP_ENDIS:
      return "VLANs on which spanning tree is disabled: 10-20,30, or none";
    case STP_MCEC_TYPE1_MST_REGION_NAME:
      return "a text of at most " + std::to_string(find_parameter(type)->length) + " bytes";
    case STP_MCEC_TYPE1_MST_REGION_REVISION:
      return "a number";
    case STP_MCEC_TYPE1_MST_REGION_VI_MAP:
      return "VLANs of MST instances: {1: 10-20, 2: \"30,40\"}";
    case STP_MCEC_TYPE1_GBL_PORT_TYPE:
      return "a list of " + text + ", or a number";
    default:
      return text + ", or a number";
  }
}

std::string title(uint16_t type) {
  return report_of(type, Bytes(find_parameter(type)->length)).param_name;
}

Bytes default_value(const ParameterName &parameter) {
  Bytes value(parameter.length);
  for (uint32_t candidate = 0; candidate < 256; ++candidate) {
    if (parameter.length == 4) value = word(candidate);
    if (stp_mcec_type1_cfg_param_is_default(parameter.type, parameter.length, value.data()) != 0) {
      return value;
    }
  }
  return {};
}

std::optional<Ranges> parse_ranges(std::string_view text, uint32_t most) {
  Ranges ranges;
  std::string rest(text);
  rest.erase(std::remove(rest.begin(), rest.end(), ' '), rest.end());
  for (std::size_t at = 0; at <= rest.size();) {
    const std::size_t end = std::min(rest.find(',', at), rest.size());
    const std::string_view part = std::string_view(rest).substr(at, end - at);
    const std::size_t dash = part.find('-');
    const auto first = parse_number(part.substr(0, dash));
    const auto last = dash == part.npos ? first : parse_number(part.substr(dash + 1));
    if (!first || !last || *first > *last || *last > most) return std::nullopt;
    ranges.emplace_back(*first, *last);
    at = end + 1;
  }
  return ranges;
}

std::optional<Ranges> parse_vlans(std::string_view text) {
  if (text.empty() || key_of(text) == "none") return Ranges{};
  return parse_ranges(text, 4095);
}

Bytes vlan_record(const Ranges &ranges) {
  Bytes record(sizeof(bmp4096_t));
  record[2] = 2;  // 512, in network byte order
  for (const auto &[first, last] : ranges) {
    for (uint32_t vlan = first; vlan <= last; ++vlan) {
      uint8_t &byte = record[4 + vlan / 8];
      byte = uint8_t(byte | 0x80U >> vlan % 8);
    }
  }
  return record;
}

std::string vlan_text(const Bytes &record) {
  Bytes whole = record;
  whole.resize(sizeof(bmp4096_t));
  return stp_mcec_lib_bmp4096_to_str(whole.data());
}

std::optional<uint32_t> parse_number(std::string_view text) {
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  if (is_hex) text.remove_prefix(2);
  uint32_t value = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, is_hex ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

std::string hex(const Bytes &bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const uint8_t byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

Bytes unhex(std::string_view text) {
  const auto digit = [](char c) {
    return unsigned(c <= '9' ? c - '0' : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
  };
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(uint8_t(digit(text[i]) << 4 | digit(text[i + 1])));
  }
  return bytes;
}

std::string port_text(uint32_t if_index) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", if_index);
  return text;
}

std::string log_line(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  return printable(text);
}

std::string printable_lines(std::string_view text) {
  std::string out;
  while (true) {
    const std::size_t end = text.find('\n');
    out += printable(text.substr(0, end));
    if (end == text.npos) return out;
    out += '\n';
    text.remove_prefix(end + 1);
  }
}

std::string printable(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                                                             : 0;
    bool whole = length > 0 && i + length <= text.size() && !(lead < 0x20 || lead == 0x7F);
    for (std::size_t k = 1; whole && k < length; ++k) {
      whole = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    }
    // Overlong forms, surrogates and C1 controls are no characters to print.
    if (whole && length > 1) {
      const auto second = static_cast<unsigned char>(text[i + 1]);
      whole = !(lead == 0xE0 && second < 0xA0) && !(lead == 0xED && second >= 0xA0) &&
              !(lead == 0xC2 && second < 0xA0);
    }
    if (whole) {
      out += text.substr(i, length);
      i += length;
    } else {
      out += "\\x" + hex({lead});
      ++i;
    }
  }
  return out;
}

}  // namespace lab
