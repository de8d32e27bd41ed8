#include "foundation/bitmap.h"

#include <cstddef>

#include "mcecm.h"

namespace mcec {
namespace {

constexpr std::size_t bitmap_offset = offsetof(bmp4096_t, bmp);

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

// The position of the first VLAN in a word in host order that has one; and take it out, besides.
inline uint32_t first_of(uint64_t vlans) {
  return static_cast<uint32_t>(__builtin_clzll(vlans));  // std::countl_zero would ask for 0 first
}

inline uint32_t take_first(uint64_t &vlans) {
  const uint32_t position = first_of(vlans);
  vlans &= ~(uint64_t{1} << 63 >> position);
  return position;
}

// The bits of three words as columns: a holds their sums afterwards, the result their carries.
inline uint64_t add_columns(uint64_t &a, uint64_t b, uint64_t c) {
  const uint64_t carry = (a & b) | ((a ^ b) & c);
  a ^= b ^ c;
  return carry;
}

}  // namespace

VlanSet vlans_of(Bytes record) {
  VlanSet vlans;
  fill({reinterpret_cast<uint8_t *>(vlans.data()), sizeof vlans},
       record.subspan(std::min(record.size(), bitmap_offset)));
  return vlans;
}

void store_vlans(void *record, const VlanSet &vlans) {
  std::copy_n(reinterpret_cast<const uint8_t *>(vlans.data()), sizeof vlans,
              static_cast<uint8_t *>(record) + bitmap_offset);
}

bool is_empty(const VlanSet &vlans) {
  return std::all_of(vlans.begin(), vlans.end(), [](uint64_t word) { return word == 0; });
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

// Eight words become one that is counted: their bits are added column by column, as binary numbers
// whose digits are kept in words of their own. The order of the bits does not matter.
uint32_t count(const void *bitmap) {
  const auto *bytes = static_cast<const uint8_t *>(bitmap);
  uint64_t ones = 0;
  uint64_t twos = 0;
  uint64_t fours = 0;
  int eights = 0;
  for (std::size_t i = 0; i < sizeof(VlanSet); i += 8 * sizeof ones) {
    const auto words = load<std::array<uint64_t, 8>>(bytes + i);
    const uint64_t twos_a = add_columns(ones, words[0], words[1]);
    const uint64_t twos_b = add_columns(ones, words[2], words[3]);
    const uint64_t twos_c = add_columns(ones, words[4], words[5]);
    const uint64_t twos_d = add_columns(ones, words[6], words[7]);
    const uint64_t fours_a = add_columns(twos, twos_a, twos_b);
    const uint64_t fours_b = add_columns(twos, twos_c, twos_d);
    eights += std::popcount(add_columns(fours, fours_a, fours_b));
  }
  return static_cast<uint32_t>(8 * eights + 4 * std::popcount(fours) + 2 * std::popcount(twos) +
                               std::popcount(ones));
}

// Runs start and end where a VLAN differs from the one before it: a word held against itself, moved
// by one, shows all such places at once. The buffer is an argument because hardening would hold
// each number against the end of one that the compiler knows.
std::size_t write_ranges(char *text, const void *bitmap) {
  const auto *bytes = static_cast<const uint8_t *>(bitmap);
  char *out = text;
  uint32_t first = 0;      // of the run that is open
  uint64_t no_change = 0;  // a word without a change: all ones in an open run, else 0
  for (std::size_t i = 0;; i += sizeof(uint64_t)) {
    while (i < sizeof(VlanSet) && load<uint64_t>(bytes + i) == no_change) i += sizeof(uint64_t);
    if (i == sizeof(VlanSet)) break;
    const auto base = static_cast<uint32_t>(8 * i);
    const uint64_t word = swap_to_network(load<uint64_t>(bytes + i));
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
  return static_cast<std::size_t>(out - text);
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
  write_ranges(stp_vlan_bmp_str_buf, static_cast<const uint8_t *>(record) + bitmap_offset);
  return stp_vlan_bmp_str_buf;
}

extern "C" uint32_t stp_mcecm_get_vlan_count() {
  return count(mcec_stp_vlan_count.bmp);
}
