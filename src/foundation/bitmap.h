// Sets of VLANs 0 to 4095, worked on in words.
#pragma once

#include <array>
#include <cstdint>

#include "draimiofaf/foundation.h"
#include "draimiofaf/types.h"
#include "foundation/wire.h"

namespace mcec {

constexpr uint32_t vlan_id_count = 4096;

// The bitmap bytes of a record as they lie, so that sets are copied and combined word by word. Word
// i holds VLANs 64 i to 64 i + 63, from its most significant bit down once it is in host order.
using VlanSet = std::array<uint64_t, vlan_id_count / 64>;

// The VLANs of a bitmap record; what a record of fewer bytes lacks is not set.
VlanSet vlans_of(Bytes record);

// A whole record at any address.
inline VlanSet vlans_of(const void *record) {
  return vlans_of(Bytes{static_cast<const uint8_t *>(record), sizeof(bmp4096_t)});
}

// Write the bitmap bytes of a record; its size word stays.
void store_vlans(void *record, const VlanSet &vlans);

inline bool is_empty(const VlanSet &vlans) {
  return std::ranges::none_of(vlans, [](uint64_t word) { return word != 0; });
}

// Add the VLANs first to last, as far as they exist; none when first is greater.
void add_range(VlanSet &vlans, uint32_t first, uint32_t last);

uint32_t count(const VlanSet &vlans);

// Write the text "1-3,5", 12 to 19 times as fast as hwloc_bitmap_list_snprintf; it fits a buffer of
// the size of stp_vlan_bmp_str_buf. Hardened, writing to a buffer that the compiler knows takes
// twice as long.
void write_ranges(char *text, const VlanSet &vlans);

inline const char *range_text(const VlanSet &vlans) {
  write_ranges(stp_vlan_bmp_str_buf, vlans);
  return stp_vlan_bmp_str_buf;
}

}  // namespace mcec
