// VLANs and numbers of interfaces, as lists of ranges.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/text.h"

namespace lab {

// --- ranges ---

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// What is wrong with a text that should be a list of ranges.
enum class RangeFault { none, no_list, reversed, too_great };

struct ParsedRanges {
  Ranges ranges;  // in the order of the text; of no use with a fault
  RangeFault fault = RangeFault::none;
};

// "1-10,20" or "0x1000-0x1003,0x2000", numbers up to `most`; blanks are skipped.
ParsedRanges parse_ranges(std::string_view text, uint32_t most);

// --- VLANs ---

constexpr uint32_t vlan_count = 4096;

// The VLANs 0 to 4095.
using Vlans = std::bitset<vlan_count>;

// A list of ranges of VLANs; "none" and "" are the empty one.
ParsedRanges parse_vlans(std::string_view text);

Vlans vlans_of(const Ranges &ranges);
Ranges ranges_of(const Vlans &vlans);

// "1-10,20", "" for none.
std::string vlan_text(const Vlans &vlans);

// "VLAN 10" or "VLANs 1-10,20", in a sentence.
std::string vlan_words(const Vlans &vlans);

// A bitmap record with its size word in network byte order, and what a record of any length holds.
Bytes vlan_record(const Vlans &vlans);
Vlans vlans_of_record(const Bytes &record);

// --- the MST instances of the VLANs ---

// The entry of a VLAN in a VLAN map of any length; 0 past its end.
uint32_t instance_of(const Bytes &map, uint32_t vlan);
void set_instance(Bytes &map, uint32_t vlan, uint32_t instance);

// The VLANs of every instance but 0.
std::map<uint32_t, Vlans> instances_of(const Bytes &map);

// "1: 10-20; 2: 30". VLANs in instance 0 are not told.
std::string vlan_map_text(const Bytes &map);

}  // namespace lab
