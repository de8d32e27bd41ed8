/*
 * TLV arrays of the stand-in, words in network byte order:
 *
 *   0          4                                              4 + bytes
 *   +----------+------+--------+-----------------+--------------+
 *   | bytes of | type | length | value           | next entry   |
 *   | entries  | (2)  | (2)    | (length) + pad  | ...          |
 *   +----------+------+--------+-----------------+--------------+
 *
 * Entries are padded to a multiple of 4. In the odd layout one byte follows the length, and there
 * is no padding, so that values are at odd and at even addresses.
 *
 * Readers check every length. An entry whose header or value extends past the array is counted but
 * cannot be read. If the first word exceeds the block or message that contains the array, the array
 * ends there. In other memory the first word is trusted: code that receives an array must compare
 * it with the number of bytes received.
 */
#include "tlv.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "internal.h"

namespace {

constexpr uint32_t header_size = 4;

enum Error : uint32_t {
  no_room = 0x40AA0001,
  broken_entry = 0x40AA0002,
  not_found = 0x40AA0003,
};

bool odd_layout = std::getenv("STANDIN_ODD_TLVS") != nullptr;

uint32_t value_offset() {
  return odd_layout ? 5 : 4;
}

uint32_t footprint(uint32_t length) {
  const uint32_t size = value_offset() + length;
  return odd_layout ? size : (size + 3) & ~uint32_t{3};
}

template <class Unsigned>
Unsigned load(const uint8_t *at) {
  Unsigned value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <class Unsigned>
void store(uint8_t *at, Unsigned value) {
  std::memcpy(at, &value, sizeof value);
}

uint32_t entry_bytes(const void *array) {
  const std::size_t extent = standin::bytes_to_end(array);
  if (extent < header_size) return 0;
  const uint32_t bytes = ntohl(load<uint32_t>(static_cast<const uint8_t *>(array)));
  return static_cast<uint32_t>(std::min<std::size_t>(bytes, extent - header_size));
}

struct Entry {
  uint16_t type;
  uint16_t length;
  const uint8_t *value;
  uint32_t end;  // cursor of the next entry
};

// Returns the entry at a cursor, or empty if it does not fit in the array.
std::optional<Entry> entry_at(const void *array, uint32_t cursor) {
  const uint32_t bytes = entry_bytes(array);
  if (cursor > bytes || bytes - cursor < value_offset()) return std::nullopt;
  const uint8_t *at = static_cast<const uint8_t *>(array) + header_size + cursor;
  Entry entry{ntohs(load<uint16_t>(at)), ntohs(load<uint16_t>(at + 2)), at + value_offset(), 0};
  const uint32_t size = footprint(entry.length);
  if (bytes - cursor < size) return std::nullopt;
  entry.end = cursor + size;
  return entry;
}

void expect_flag(uint32_t flag) {
  if (flag != TLV_ALIGNED_FLAG) standin::misuse("the flag of a TLV operation is %u", flag);
}

void set_value(const Entry &entry, uint16_t *length, void **value) {
  *length = entry.length;
  *value = const_cast<uint8_t *>(entry.value);
}

}  // namespace

uint16_t tlv_aligned_data_size_get(uint32_t length) {
  return static_cast<uint16_t>(footprint(length));
}

uint32_t tlv_aligned_array_add_tlv(void *array, uint32_t array_size, uint16_t type, uint16_t length,
                                   const void *value, uint32_t flag) {
  expect_flag(flag);
  const std::size_t extent = standin::bytes_to_end(array);
  if (extent != SIZE_MAX && extent != array_size) {
    standin::misuse("the size of a block of %zu bytes is passed as %u", extent, array_size);
  }
  if (standin::fails(STANDIN_TLV_ADD)) return STANDIN_TLV_INJECTED_FAILURE;
  if (array_size < header_size) return no_room;
  const uint32_t bytes = entry_bytes(array);
  const uint32_t capacity = array_size - header_size;
  if (bytes > capacity || capacity - bytes < footprint(length)) return no_room;
  auto *start = static_cast<uint8_t *>(array);
  uint8_t *at = start + header_size + bytes;
  store(at, htons(type));
  store(at + 2, htons(length));
  if (length > 0) std::memcpy(at + value_offset(), value, length);
  store(start, htonl(bytes + footprint(length)));
  return 0;
}

uint32_t tlv_aligned_array_get_num_tlvs(const void *array, uint32_t flag) {
  expect_flag(flag);
  uint32_t count = 0;
  for (uint32_t cursor = 0; cursor < entry_bytes(array); ++count) {
    const std::optional<Entry> entry = entry_at(array, cursor);
    if (!entry) return count + 1;
    cursor = entry->end;
  }
  return count;
}

uint32_t tlv_aligned_array_get_next_tlv(const void *array, uint16_t *type, uint16_t *length,
                                        void **value, uint32_t flag, uint32_t *cursor) {
  expect_flag(flag);
  if (standin::fails(STANDIN_TLV_NEXT)) return STANDIN_TLV_INJECTED_FAILURE;
  const std::optional<Entry> entry = entry_at(array, *cursor);
  if (!entry) return broken_entry;
  *type = entry->type;
  set_value(*entry, length, value);
  *cursor = entry->end;
  return 0;
}

uint32_t tlv_aligned_array_find_tlv(const void *array, uint16_t type, uint16_t *length,
                                    void **value, uint32_t flag) {
  expect_flag(flag);
  if (standin::fails(STANDIN_TLV_FIND)) return STANDIN_TLV_INJECTED_FAILURE;
  for (uint32_t cursor = 0; cursor < entry_bytes(array);) {
    const std::optional<Entry> entry = entry_at(array, cursor);
    if (!entry) return broken_entry;
    if (entry->type == type) {
      set_value(*entry, length, value);
      return 0;
    }
    cursor = entry->end;
  }
  return not_found;
}

size_t standin_tlv_array_bytes(const void *array) {
  return size_t{header_size} + entry_bytes(array);
}

void standin_tlv_odd(uint32_t odd) {
  odd_layout = odd != 0;
}
