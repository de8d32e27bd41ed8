#include "foundation/bitmap.h"

#include <cstddef>

#include "draimiofaf/foundation.h"
#include "mcecm.h"

namespace mcec {
namespace {

constexpr std::size_t bitmap_offset = offsetof(bmp4096_t, bmp);

// The first VLAN at or after `from` whose bit, flipped by `flip`, is set; vlan_id_count: none.
uint32_t next(const VlanSet &vlans, uint32_t from, uint64_t flip) {
  if (from >= vlan_id_count) return vlan_id_count;
  std::size_t i = from / 64;
  uint64_t bits = (vlans[i] ^ flip) & (~uint64_t{0} >> (from % 64));
  while (bits == 0) {
    if (++i == vlans.size()) return vlan_id_count;
    bits = vlans[i] ^ flip;
  }
  return static_cast<uint32_t>(i * 64) + static_cast<uint32_t>(std::countl_zero(bits));
}

uint32_t next_set(const VlanSet &vlans, uint32_t from) {
  return next(vlans, from, 0);
}

uint32_t next_clear(const VlanSet &vlans, uint32_t from) {
  return next(vlans, from, ~uint64_t{0});
}

// "00" to "99".
constexpr auto digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// A VLAN identifier without leading zeros; at most four digits.
char *write_vlan(char *out, uint32_t vlan) {
  const char *high = &digit_pairs[2 * (vlan / 100)];
  const char *low = &digit_pairs[2 * (vlan % 100)];
  if (vlan >= 1000) *out++ = high[0];
  if (vlan >= 100) *out++ = high[1];
  if (vlan >= 10) *out++ = low[0];
  *out++ = low[1];
  return out;
}

}  // namespace

VlanSet vlans_of(Bytes record) {
  VlanSet vlans{};
  if (record.size() <= bitmap_offset) return vlans;
  const Bytes bitmap = record.subspan(bitmap_offset);
  std::memcpy(vlans.data(), bitmap.data(), std::min(bitmap.size(), sizeof vlans));
  for (uint64_t &word : vlans) word = swap_to_network(word);
  return vlans;
}

void store_vlans(void *record, const VlanSet &vlans) {
  uint8_t *bitmap = static_cast<uint8_t *>(record) + bitmap_offset;
  for (std::size_t i = 0; i < vlans.size(); ++i) {
    store(bitmap + 8 * i, swap_to_network(vlans[i]));
  }
}

uint32_t count(const VlanSet &vlans) {
  uint32_t set = 0;
  for (const uint64_t word : vlans) set += static_cast<uint32_t>(std::popcount(word));
  return set;
}

void add_range(VlanSet &vlans, uint32_t first, uint32_t last) {
  last = std::min(last, vlan_id_count - 1);
  if (first > last) return;
  for (uint32_t i = first / 64; i <= last / 64; ++i) {
    uint64_t bits = ~uint64_t{0};
    if (i == first / 64) bits &= ~uint64_t{0} >> (first % 64);
    if (i == last / 64) bits &= ~uint64_t{0} << (63 - last % 64);
    vlans[i] |= bits;
  }
}

const char *write_ranges(const VlanSet &vlans) {
  char *const text = stp_vlan_bmp_str_buf;
  char *out = text;
  for (uint32_t first = next_set(vlans, 0); first < vlan_id_count;) {
    const uint32_t end = next_clear(vlans, first);
    if (out != text) *out++ = ',';
    out = write_vlan(out, first);
    if (end - first > 1) {
      *out++ = '-';
      out = write_vlan(out, end - 1);
    }
    first = next_set(vlans, end);
  }
  *out = '\0';
  return text;
}

}  // namespace mcec

using namespace mcec;

char stp_vlan_bmp_str_buf[16384];

extern "C" void stp_mcec_lib_bmp4096_hton(const void *src, void *dst) {
  swap_copy<uint32_t>(dst, src);
}

extern "C" void stp_mcec_lib_bmp4096_ntoh(const void *src, void *dst) {
  swap_copy<uint32_t>(dst, src);
}

extern "C" const char *stp_mcec_lib_bmp4096_to_str(const void *record) {
  return write_ranges(vlans_of(record));
}

extern "C" uint32_t stp_mcecm_get_vlan_count() {
  return count(vlans_of(&mcec_stp_vlan_count));
}
