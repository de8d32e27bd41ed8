// VLANs as sets, lists of ranges and values of parameters.
#pragma once

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "text/text.h"

namespace YAML {
class Node;
}

namespace lab {

struct Reader;

constexpr uint32_t vlan_count = 4096;

// The VLANs 0 to 4095.
using Vlans = std::bitset<vlan_count>;

// A list of ranges of VLANs; "none" and "" are the empty one.
ParsedRanges parse_vlans(std::string_view text);

Vlans vlans_of(const Ranges &ranges);
Ranges ranges_of(const Vlans &vlans);

// "1-10,20", "" for none.
std::string vlan_text(const Vlans &vlans);

// A list of VLANs in YAML.
Vlans read_vlan_list(Reader &reader, const YAML::Node &node, const std::string &what);
std::string write_vlan_list(const Vlans &vlans);

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

// The IEEE 802.1Q configuration digest, by which bridges compare their MST regions without showing
// their VLAN maps: 32 hexadecimal digits in capitals. VLANs 0 and 4095, which no bridge maps, and
// those past the end of a short map are of instance 0.
std::string region_digest(const Bytes &map);

}  // namespace lab
