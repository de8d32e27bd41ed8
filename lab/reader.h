// Reading YAML for people: whatever is not as it must be becomes a mistake with its place, and reading
// goes on, so that all mistakes of a file are told at once.
#pragma once

#include <yaml-cpp/yaml.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "scenario.h"

namespace lab {

// What a reading function is given as `what` names the thing in a mistake; what it returns after a
// mistake is of no use but harmless.
struct Reader {
  std::vector<Mistake> mistakes;
  std::set<uint32_t> ports;  // that exist on either switch

  // --- mistakes ---

  void mistake(const YAML::Node &node, const std::string &text);

  static std::string found(const YAML::Node &node);

  void expected(const YAML::Node &node, const std::string &what);

  // A mapping with these keys only. Returns false when it is no mapping.
  bool mapping(const YAML::Node &node, const std::string &what,
               const std::vector<std::string> &allowed);

  // A key that must be there.
  bool required(const YAML::Node &node, const char *key, const std::string &what);

  // --- scalars ---

  // For people: what no terminal should see is escaped.
  std::string text(const YAML::Node &node, const std::string &what);

  bool boolean(const YAML::Node &node, const std::string &what);

  uint32_t number(const YAML::Node &node, const std::string &what, uint32_t least = 0,
                  uint32_t most = UINT32_MAX);

  // One of some words, or, where numbers are allowed too, any number.
  uint32_t word_value(const YAML::Node &node, const std::string &what,
                      const std::map<std::string, uint32_t> &words, bool numbers = true);

  Ranges vlans(const YAML::Node &node, const std::string &what);

  std::string vlan_record_hex(const YAML::Node &node, const std::string &what);

  // "0x1000-0x1003, 0x2000"
  Ranges port_ranges(const YAML::Node &node, const std::string &what);

  // Ranges with at least a port each.
  Ranges existing_ports(const YAML::Node &node, const std::string &what);

  std::vector<uint32_t> ports_in(const Ranges &ranges) const;

  Bytes bytes(const YAML::Node &node, const std::string &what);

  // --- parameters ---

  const ParameterName *parameter(const YAML::Node &node);

  Bytes vlan_map(const YAML::Node &node);

  Bytes flags(const YAML::Node &node);

  Bytes region_name(const YAML::Node &node, std::size_t length);

  Bytes value(const ParameterName &of, const YAML::Node &node);

  // {stp-mode: mst, ...} as entries for a switch; of the switch or of an interface only, or of both.
  Json entries(const YAML::Node &node, const std::string &what,
               std::optional<bool> global = std::nullopt);
};

}  // namespace lab
