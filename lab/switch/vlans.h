// Sets of VLANs, and their conversion from and to range lists, texts and parameter values.
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

// A set of VLANs, 0 to 4095.
using Vlans = std::bitset<vlan_count>;

// Convert from valid ranges of VLANs, and to ascending ranges.
Vlans vlans_of(const Ranges &ranges);
Ranges ranges_of(const Vlans &vlans);

// Returns "1-10,20", or "" for the empty set.
std::string vlan_text(const Vlans &vlans);

// Read and format a list of VLANs in YAML. "none" and "" are empty lists. Ranges are in the order
// of the list, and may overlap.
Ranges read_vlan_ranges(Reader &reader, const YAML::Node &node, const std::string &what);
Vlans read_vlan_list(Reader &reader, const YAML::Node &node, const std::string &what);
std::string write_vlan_list(const Vlans &vlans);

// Returns "VLAN 10" or "VLANs 1-10,20".
std::string vlan_words(const Vlans &vlans);

// Convert to a bitmap record, whose size word is in network byte order, and from one of any length.
Bytes vlan_record(const Vlans &vlans);
Vlans vlans_of_record(const Bytes &record);

// --- the MST instances of the VLANs ---

// Returns the instance of a VLAN in a VLAN map of any length; 0 past its end.
uint32_t instance_of(const Bytes &map, uint32_t vlan);
void set_instance(Bytes &map, uint32_t vlan, uint32_t instance);

// Returns the VLANs of every instance except 0.
std::map<uint32_t, Vlans> instances_of(const Bytes &map);

// Returns the IEEE 802.1Q configuration digest of a VLAN map, by which bridges compare their MST
// regions: 32 hexadecimal digits in capitals. VLANs 0 and 4095, which no bridge maps, and VLANs
// past the end of a short map are in instance 0.
std::string region_digest(const Bytes &map);

}  // namespace lab
