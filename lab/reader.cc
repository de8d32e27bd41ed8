#include "reader.h"

#include <algorithm>
#include <cstring>

namespace lab {
namespace {

constexpr uint32_t max_ports = 100000;

std::vector<std::string> keys_of(const std::map<std::string, uint32_t> &words) {
  std::vector<std::string> keys;
  for (const auto &[key, value] : words) keys.push_back(key);
  return keys;
}

}  // namespace

void Reader::mistake(const YAML::Node &node, const std::string &text) {
  const YAML::Mark mark = node.IsDefined() ? node.Mark() : YAML::Mark::null_mark();
  mistakes.push_back({std::max(mark.line, 0) + 1, std::max(mark.column, 0) + 1, text});
}

std::string Reader::found(const YAML::Node &node) {
  if (!node.IsDefined() || node.IsNull()) return "found nothing";
  if (node.IsMap()) return "found a mapping";
  if (node.IsSequence()) return "found a list";
  return "found '" + printable(node.Scalar()) + "'";
}

void Reader::expected(const YAML::Node &node, const std::string &what) {
  mistake(node, found(node) + "; expected " + what);
}

bool Reader::mapping(const YAML::Node &node, const std::string &what,
                     const std::vector<std::string> &allowed) {
  if (!node.IsMap()) {
    expected(node, what + ", a mapping with " + one_of(allowed));
    return false;
  }
  std::set<std::string> seen;
  for (const auto &pair : node) {
    const std::string key = pair.first.IsScalar() ? pair.first.Scalar() : "";
    if (std::find(allowed.begin(), allowed.end(), key) == allowed.end()) {
      mistake(pair.first,
              "unknown key '" + printable(key) + "' in " + what + "; expected " + one_of(allowed));
    } else if (!seen.insert(key).second) {
      mistake(pair.first, "key '" + key + "' stands twice in " + what);
    }
  }
  return true;
}

bool Reader::required(const YAML::Node &node, const char *key, const std::string &what) {
  if (node[key].IsDefined()) return true;
  mistake(node, what + " without '" + key + "'; expected it there");
  return false;
}

std::string Reader::text(const YAML::Node &node, const std::string &what) {
  if (node.IsScalar()) return printable_lines(node.Scalar());
  expected(node, what);
  return "";
}

bool Reader::boolean(const YAML::Node &node, const std::string &what) {
  bool value = false;
  if (!node.IsScalar() || !YAML::convert<bool>::decode(node, value)) {
    expected(node, what + ": true or false");
  }
  return value;
}

uint32_t Reader::number(const YAML::Node &node, const std::string &what, uint32_t least,
                        uint32_t most) {
  const auto value = node.IsScalar() ? parse_number(node.Scalar()) : std::nullopt;
  if (value && *value >= least && *value <= most) return *value;
  expected(node, what + ": a number from " + std::to_string(least) + " to " + std::to_string(most) +
                     " (decimal, or 0x...)");
  return least;
}

uint32_t Reader::word_value(const YAML::Node &node, const std::string &what,
                            const std::map<std::string, uint32_t> &words, bool numbers) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  for (const std::string &spelling : {given, key_of(given), key_of(given) + "-port"}) {
    if (const auto known = words.find(spelling); known != words.end()) return known->second;
  }
  if (const std::string key = key_of(given); key.ends_with("-port")) {
    const auto known = words.find(key.substr(0, key.size() - std::strlen("-port")));
    if (known != words.end()) return known->second;
  }
  if (numbers) {
    if (const auto value = parse_number(given)) return *value;
  }
  expected(node, what + ": " + one_of(keys_of(words)) + (numbers ? ", or a number" : ""));
  return 0;
}

Ranges Reader::vlans(const YAML::Node &node, const std::string &what) {
  if (const auto ranges = node.IsScalar() ? parse_vlans(node.Scalar()) : std::nullopt) {
    return *ranges;
  }
  expected(node, what + ": VLANs 0 to 4095, for instance 1-10,20, or none");
  return {};
}

std::string Reader::vlan_record_hex(const YAML::Node &node, const std::string &what) {
  return hex(vlan_record(vlans(node, what)));
}

Ranges Reader::port_ranges(const YAML::Node &node, const std::string &what) {
  const auto ranges = node.IsScalar() ? parse_ranges(node.Scalar(), UINT32_MAX) : std::nullopt;
  const bool few = ranges && std::all_of(ranges->begin(), ranges->end(), [](const auto &range) {
                     return range.second - range.first < max_ports;
                   });
  if (few && !ranges->empty()) return *ranges;
  expected(node, what + ": port indexes, for instance 0x1000-0x1003,0x2000");
  return {};
}

Ranges Reader::existing_ports(const YAML::Node &node, const std::string &what) {
  Ranges ranges = port_ranges(node, what);
  for (const auto &[first, last] : ranges) {
    const auto at = ports.lower_bound(first);
    if (at != ports.end() && *at <= last) continue;
    mistake(node, "port " + port_text(first) + (first == last ? "" : " to " + port_text(last)) +
                      " does not exist; expected one that a switch of the scenario has");
  }
  return ranges;
}

std::vector<uint32_t> Reader::ports_in(const Ranges &ranges) const {
  std::vector<uint32_t> found_ports;
  for (const auto &[first, last] : ranges) {
    for (auto at = ports.lower_bound(first); at != ports.end() && *at <= last; ++at) {
      found_ports.push_back(*at);
    }
  }
  return found_ports;
}

Bytes Reader::bytes(const YAML::Node &node, const std::string &what) {
  std::string digits = node.IsScalar() ? node.Scalar() : "x";
  digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
  const bool valid = digits.size() % 2 == 0 && digits.size() / 2 <= UINT16_MAX &&
                     digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
  if (!valid) expected(node, what + ": bytes in hexadecimal, for instance 00 00 00 05");
  return valid ? unhex(digits) : Bytes{};
}

const ParameterName *Reader::parameter(const YAML::Node &node) {
  const ParameterName *known =
      node.IsScalar() ? find_parameter(std::string_view(node.Scalar())) : nullptr;
  if (known == nullptr) {
    std::vector<std::string> keys;
    for (const ParameterName &name : parameters()) keys.push_back(name.key);
    expected(node, "a parameter: " + one_of(keys));
  }
  return known;
}

Bytes Reader::vlan_map(const YAML::Node &node) {
  Bytes map(2 * 4096);
  if (!node.IsMap()) {
    expected(node, "the VLANs of MST instances, for instance {1: 10-20}");
    return map;
  }
  for (const auto &pair : node) {
    const uint32_t instance = number(pair.first, "an MST instance", 0, 4094);
    for (const auto &[first, last] : vlans(pair.second, "its VLANs")) {
      for (uint32_t vlan = first; vlan <= last; ++vlan) {
        if (map[2 * vlan] != 0 || map[2 * vlan + 1] != 0) {
          mistake(pair.second,
                  "VLAN " + std::to_string(vlan) + " stands in two instances; expected it in one");
          return map;
        }
        map[2 * vlan] = uint8_t(instance >> 8);
        map[2 * vlan + 1] = uint8_t(instance);
      }
    }
  }
  return map;
}

Bytes Reader::flags(const YAML::Node &node) {
  if (!node.IsSequence()) return word(word_value(node, "flags", flag_words()));
  uint32_t value = 0;
  for (const auto &flag : node) value |= word_value(flag, "a flag", flag_words());
  return word(value);
}

Bytes Reader::region_name(const YAML::Node &node, std::size_t length) {
  if (!node.IsScalar()) expected(node, "a region name");
  const std::string name = node.IsScalar() ? node.Scalar() : "";
  if (name.size() > length) expected(node, "a region name of at most 32 bytes");
  Bytes value(name.begin(), name.end());
  value.resize(length);
  return value;
}

Bytes Reader::value(const ParameterName &of, const YAML::Node &node) {
  if (node.IsMap() && node["bytes"].IsDefined()) {
    mapping(node, "a value", {"bytes"});
    return bytes(node["bytes"], "a value");
  }
  switch (of.type) {
    case STP_MCEC_TYPE1_STP_ENDIS:
      return vlan_record(vlans(node, of.key));
    case STP_MCEC_TYPE1_MST_REGION_NAME:
      return region_name(node, of.length);
    case STP_MCEC_TYPE1_MST_REGION_VI_MAP:
      return vlan_map(node);
    case STP_MCEC_TYPE1_GBL_PORT_TYPE:
      return flags(node);
    case STP_MCEC_TYPE1_MST_REGION_REVISION:
      return word(number(node, of.key));
    default:
      return word(word_value(node, of.key, value_words(of.type)));
  }
}

Json Reader::entries(const YAML::Node &node, const std::string &what, std::optional<bool> global) {
  Json read = Json::array();
  if (!node.IsMap()) {
    expected(node, what + ": parameters and their values, for instance {stp-mode: mst}");
    return read;
  }
  for (const auto &pair : node) {
    const ParameterName *name = parameter(pair.first);
    if (name == nullptr) continue;
    if (name->is_global != global.value_or(name->is_global)) {
      mistake(pair.first,
              "found '" + name->key + "', a parameter of " +
                  (name->is_global ? "the switch" : "interfaces") + "; expected it " +
                  (name->is_global ? "among the parameters of the switch" : "in a group of ports"));
    }
    read.push_back({{"type", name->type}, {"value", hex(value(*name, pair.second))}});
  }
  return read;
}

}  // namespace lab
