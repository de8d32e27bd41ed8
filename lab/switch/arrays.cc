#include "switch/arrays.h"

#include "draimiofaf/types.h"
#include "tlv.h"

namespace lab {
namespace {

constexpr uint32_t array_flag = 1;

}  // namespace

Bytes build_array(const std::vector<Entry> &entries) {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (const Entry &entry : entries) {
    size += tlv_aligned_data_size_get(uint32_t(entry.value.size()));
  }
  Bytes array(size);
  for (const Entry &entry : entries) {
    tlv_aligned_array_add_tlv(array.data(), size, entry.type, uint16_t(entry.value.size()),
                              entry.value.data(), array_flag);
  }
  return array;
}

std::vector<Entry> entries_of(const Bytes &array) {
  std::vector<Entry> entries;
  if (array.empty()) return entries;
  uint32_t cursor = 0;
  for (uint32_t left = tlv_aligned_array_get_num_tlvs(array.data(), array_flag); left > 0; --left) {
    uint16_t type = 0;
    uint16_t length = 0;
    void *value = nullptr;
    if (tlv_aligned_array_get_next_tlv(array.data(), &type, &length, &value, array_flag, &cursor) !=
        0) {
      break;
    }
    const auto *bytes = static_cast<const uint8_t *>(value);
    entries.push_back({type, {bytes, bytes + length}});
  }
  return entries;
}

}  // namespace lab
