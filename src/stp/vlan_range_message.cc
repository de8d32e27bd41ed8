// Converts the byte order of the VLAN-range state-change message, in place or between two buffers.

#include "draimiofaf/stp.h"
#include "foundation/wire.h"

using namespace mcec;

namespace {

constexpr std::size_t first_offset = 0;
constexpr std::size_t second_offset = 4;
constexpr std::size_t entry_count_offset = 8;
constexpr std::size_t list_flag_offset = 12;
constexpr std::size_t body_offset = 13;

enum class From { host, network };

void convert(void *dst, const void *src, From from) {
  if (dst == nullptr || src == nullptr) return;
  auto *to = static_cast<uint8_t *>(dst);
  const auto *in = static_cast<const uint8_t *>(src);
  const auto count_before = load<uint32_t>(in + entry_count_offset);
  swap_copy<uint32_t>(to + first_offset, in + first_offset);
  const auto count_after = swap_copy<uint32_t>(to + entry_count_offset, in + entry_count_offset);
  swap_copy<uint32_t>(to + second_offset, in + second_offset);
  if (in[list_flag_offset] != 0) {
    swap_copy<uint32_t>(to + body_offset, in + body_offset);
    return;
  }
  const uint32_t count = from == From::host ? count_before : count_after;
  for (uint32_t i = 0; i < count; ++i) {
    const std::size_t offset = body_offset + sizeof(uint16_t) * std::size_t{i};
    swap_copy<uint16_t>(to + offset, in + offset);
  }
}

}  // namespace

extern "C" void stp_hton_vlan_range_state_change_mts_msg(void *dst, const void *src) {
  convert(dst, src, From::host);
}

extern "C" void stp_ntoh_vlan_range_state_change_mts_msg(void *dst, const void *src) {
  convert(dst, src, From::network);
}
