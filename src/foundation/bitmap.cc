#include "foundation/bitmap.h"

#include <cstddef>

#include "draimiofaf/foundation.h"
#include "mcecm.h"

namespace mcec {
namespace {

// The texts of 1000 to 4095, one behind the other; four characters can be read from each digit on.
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

// A VLAN identifier. The text of a small one is the end of that of the one greater by 1000. Four
// characters are always written; those past the end that is returned do not count.
inline char *write_vlan(char *out, uint32_t vlan) {
  if (vlan >= first_of_four_digits) {
    std::memcpy(out, &four_digits[vlan_digits * (vlan - first_of_four_digits)], vlan_digits);
    return out + vlan_digits;
  }
  const std::size_t length = 1U + (vlan >= 10 ? 1 : 0) + (vlan >= 100 ? 1 : 0);
  std::memcpy(out, &four_digits[vlan_digits * vlan + (vlan_digits - length)], vlan_digits);
  return out + length;
}

// "7," or "1-3,".
inline char *write_run(char *out, uint32_t first, uint32_t last) {
  out = write_vlan(out, first);
  if (first != last) {
    *out++ = '-';
    out = write_vlan(out, last);
  }
  *out++ = ',';
  return out;
}

// The position of the first VLAN in a word in host order that has one.
inline uint32_t first_of(uint64_t vlans) {
  return static_cast<uint32_t>(__builtin_clzll(vlans));  // std::countl_zero would test for 0 first
}

inline uint32_t take_first(uint64_t &vlans) {
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

// Runs start and end where a VLAN differs from the one before it: the exclusive or of a word and
// the word moved by one has a bit for each such place. The buffer is an argument because hardening
// would compare each number with the end of one that the compiler knows.
void write_ranges(char *text, const VlanSet &vlans) {
  char *out = text;
  uint32_t first = 0;      // of the run that is open
  uint64_t no_change = 0;  // a word without a change: all ones in an open run, else 0
  for (std::size_t i = 0;; ++i) {
    while (i < vlans.size() && vlans[i] == no_change) ++i;
    if (i == vlans.size()) break;
    const auto base = static_cast<uint32_t>(64 * i);
    const uint64_t word = swap_to_network(vlans[i]);
    const uint64_t changes = word ^ (word >> 1 | no_change << 63);
    if ((changes & (changes - 1)) == 0) {  // one, as in most words of a few long runs
      const uint32_t change = base + first_of(changes);
      if (no_change != 0) out = write_run(out, first, change - 1);
      first = change;
      no_change = ~no_change;
      continue;
    }
    uint64_t starts = changes & word;
    uint64_t ends = changes & ~word;
    if (no_change == 0) first = base + take_first(starts);
    while (ends != 0) {
      out = write_run(out, first, base + take_first(ends) - 1);
      if (starts == 0) break;
      first = base + take_first(starts);
    }
    no_change = uint64_t{0} - (word & 1);
  }
  if (no_change != 0) out = write_run(out, first, vlan_id_count - 1);
  if (out != text) --out;  // the last comma
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
