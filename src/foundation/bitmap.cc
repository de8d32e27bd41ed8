#include "foundation/bitmap.h"

#include <cstddef>

#include "draimiofaf/foundation.h"
#include "mcecm.h"

namespace mcec {
namespace {

// The texts of 1000 to 4095 without separators, padded so that four characters can be read from
// each digit.
constexpr std::size_t vlan_digits = 4;
constexpr uint32_t first_of_four_digits = 1000;
constexpr auto four_digits = [] {
  std::array<char, vlan_digits *(vlan_id_count - first_of_four_digits + 1)> texts{};
  for (uint32_t vlan = first_of_four_digits; vlan < vlan_id_count; ++vlan) {
    char *digit = &texts[vlan_digits * (vlan - first_of_four_digits) + vlan_digits];
    for (uint32_t left = vlan; left > 0; left /= 10) *--digit = static_cast<char>('0' + left % 10);
  }
  return texts;
}();

// Writes a VLAN identifier and returns its end. The text of a small one is the end of the text of
// the one greater by 1000. Always writes four characters; those after the returned end are
// undefined.
inline char *write_vlan(char *out, uint32_t vlan) {
  if (vlan >= first_of_four_digits) {
    std::memcpy(out, &four_digits[vlan_digits * (vlan - first_of_four_digits)], vlan_digits);
    return out + vlan_digits;
  }
  const std::size_t length = 1U + (vlan >= 10 ? 1 : 0) + (vlan >= 100 ? 1 : 0);
  std::memcpy(out, &four_digits[vlan_digits * vlan + (vlan_digits - length)], vlan_digits);
  return out + length;
}

// Writes "7," or "1-3," and returns its end.
inline char *write_run(char *out, uint32_t first, uint32_t last) {
  out = write_vlan(out, first);
  if (first != last) {
    *out++ = '-';
    out = write_vlan(out, last);
  }
  *out++ = ',';
  return out;
}

// Returns the position of the first VLAN in a non-empty word in host order.
inline uint32_t first_of(uint64_t vlans) {
  return static_cast<uint32_t>(__builtin_clzll(vlans));  // std::countl_zero also tests for 0
}

inline uint32_t remove_first(uint64_t &vlans) {
  const uint32_t position = first_of(vlans);
  vlans &= ~(uint64_t{1} << 63 >> position);
  return position;
}

}  // namespace

VlanSet vlans_of(Bytes record) {
  VlanSet vlans;
  fill({reinterpret_cast<uint8_t *>(vlans.data()), sizeof vlans},
       record.subspan(std::min(record.size(), offsetof(bmp4096_t, bmp))));
  return vlans;
}

void store_vlans(void *record, const VlanSet &vlans) {
  std::copy_n(reinterpret_cast<const uint8_t *>(vlans.data()), sizeof vlans,
              static_cast<uint8_t *>(record) + offsetof(bmp4096_t, bmp));
}

void add_range(VlanSet &vlans, uint32_t first, uint32_t last) {
  last = std::min(last, vlan_id_count - 1);
  for (uint32_t i = first / 64; i <= last / 64; ++i) {
    uint64_t bits = ~uint64_t{0};
    if (i == first / 64) bits &= ~uint64_t{0} >> (first % 64);
    if (i == last / 64) bits &= ~uint64_t{0} << (63 - last % 64);
    vlans[i] |= swap_to_network(bits);
  }
}

uint32_t count(const VlanSet &vlans) {
  int ones = 0;
  for (const uint64_t word : vlans) ones += std::popcount(word);
  return static_cast<uint32_t>(ones);
}

// A run starts or ends where a VLAN differs from the one before it: the exclusive or of a word and
// the word shifted by one has a bit for each change. The buffer is an argument because a hardened
// build would check every write to a buffer of known size.
void write_ranges(char *text, const VlanSet &vlans) {
  char *out = text;
  uint32_t first = 0;      // of the open run
  uint64_t no_change = 0;  // a word without a change: all ones in an open run, else 0
  for (std::size_t i = 0;; ++i) {
    while (i < vlans.size() && vlans[i] == no_change) ++i;
    if (i == vlans.size()) break;
    const auto base = static_cast<uint32_t>(64 * i);
    const uint64_t word = swap_to_network(vlans[i]);
    const uint64_t changes = word ^ (word >> 1 | no_change << 63);
    if ((changes & (changes - 1)) == 0) {  // one change, as in most words of long runs
      const uint32_t change = base + first_of(changes);
      if (no_change != 0) out = write_run(out, first, change - 1);
      first = change;
      no_change = ~no_change;
      continue;
    }
    uint64_t starts = changes & word;
    uint64_t ends = changes & ~word;
    if (no_change == 0) first = base + remove_first(starts);
    while (ends != 0) {
      out = write_run(out, first, base + remove_first(ends) - 1);
      if (starts == 0) break;
      first = base + remove_first(starts);
    }
    no_change = uint64_t{0} - (word & 1);
  }
  if (no_change != 0) out = write_run(out, first, vlan_id_count - 1);
  if (out != text) --out;  // removes the last comma
  *out = '\0';
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
  return range_text(vlans_of(record));
}

extern "C" uint32_t stp_mcecm_get_vlan_count() {
  return count(vlans_of(&mcec_stp_vlan_count));
}
