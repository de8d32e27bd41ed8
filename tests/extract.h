// Shared by the tests of extraction.
#pragma once

#include "support.h"

namespace test {

struct Extract : LibraryTest {
  void SetUp() override {
    LibraryTest::SetUp();
    standin_add_ports(0x1000, 0x1003, 26, 2);
    standin_set_member(0x1001, 11);
    standin_set_member(0x1003, 13);
  }
};

inline const std::string entry_op = "stp_mcec_type1_cfg_param_extractor: ";
inline const std::string cli_op = "stp_mcec_param_extractor_from_cli: ";

inline Attribute mode(uint32_t value) {
  return {STP_MCEC_ATTR_STP_MODE, host_words({value})};
}

// Pairs of first and last VLAN.
inline Attribute vlan_list(std::vector<uint32_t> ranges) {
  std::vector<uint32_t> words = {0xDEAD, uint32_t(ranges.size() / 2)};
  words.insert(words.end(), ranges.begin(), ranges.end());
  return {STP_MCEC_ATTR_VLAN_LIST, host_words(words)};
}

inline Attribute ports(std::vector<uint32_t> ranges) {
  std::vector<uint32_t> words = {0xDEAD, uint32_t(ranges.size() / 2), 0xDEAD, 0xDEAD};
  words.insert(words.end(), ranges.begin(), ranges.end());
  return {STP_MCEC_ATTR_IFINDEX, host_words(words)};
}

inline Attribute cut(Attribute attribute, std::size_t length) {
  attribute.value.resize(length);
  return attribute;
}

inline std::string set_one(int type, int records, int tlv_array, const std::string &value) {
  const std::string number = std::to_string(type);
  return "0 | ok | cmd 1 count 1 | type " + std::to_string(records) + " " + number +
         ",1,1,0 | type " + std::to_string(tlv_array) + " " + number + ":" + value;
}

}  // namespace test
