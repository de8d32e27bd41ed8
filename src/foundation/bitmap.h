// Sets of VLANs 0 to 4095, worked on in words.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "draimiofaf/foundation.h"
#include "draimiofaf/types.h"
#include "foundation/wire.h"

namespace mcec {

constexpr uint32_t vlan_id_count = 4096;
constexpr std::size_t bitmap_record_size = sizeof(bmp4096_t);

// The bitmap bytes of a record as they lie, so that sets are copied and combined word by word. Word
// i holds VLANs 64 i to 64 i + 63, from its most significant bit down once it is in host order.
using VlanSet = std::array<uint64_t, vlan_id_count / 64>;

// The VLANs of a bitmap record; what a record of fewer bytes lacks is not set.
VlanSet vlans_of(Bytes record);

// A whole record at any address.
inline VlanSet vlans_of(const void *record) {
  return vlans_of(Bytes{static_cast<const uint8_t *>(record), bitmap_record_size});
}

// Write the bitmap bytes of a record; its size word stays.
void store_vlans(void *record, const VlanSet &vlans);

bool is_empty(const VlanSet &vlans);

// Add the VLANs first to last, as far as they exist; none when first is greater.
void add_range(VlanSet &vlans, uint32_t first, uint32_t last);

// Of bitmap bytes at any address: how many VLANs are set, and the range text, "1-3,5", written to
// `text`, whose length is returned. Any text fits a buffer of the size of stp_vlan_bmp_str_buf.
uint32_t count(const void *bitmap);
std::size_t write_ranges(char *text, const void *bitmap);

// The range text in stp_vlan_bmp_str_buf.
inline std::string_view range_text(const VlanSet &vlans) {
  return {stp_vlan_bmp_str_buf, write_ranges(stp_vlan_bmp_str_buf, vlans.data())};
}

}  // namespace mcec
