/*
 * TLV arrays, words in little-endian order on every machine:
 *
 *   0          4          6      8                                4 + bytes
 *   +----------+----------+------+-------------------+-------------+
 *   | bytes of | length + | type | value, padded to  | next entry  |
 *   | entries  | 4        | (2)  | a multiple of 4   | ...         |
 *   |          | (2)      |      |                   |             |
 *   +----------+----------+------+-------------------+-------------+
 *
 * The length of 16 bits includes the header of the entry, so a value has at most 65528 bytes:
 * longer ones are refused.
 *
 * Readers check the length of every entry. They trust the first word, because they do not know the
 * size of the buffer: code that receives an array must call platform_array_bytes first.
 */
#include <draimiofaf/platform/syserr.h>
#include <draimiofaf/platform/tlv.h>
#include <endian.h>
#include <stdio.h>
#include <string.h>

#include "platform.h"

enum { array_head = 4, entry_head = 4, max_value = 65528 };

enum {
  tlv_no_room = 0x7001,
  tlv_too_long = 0x7002,
  tlv_unreadable = 0x7003,
  tlv_not_found = 0x7004,
};

static uint32_t footprint(uint32_t length) {
  return entry_head + (length + 3) / 4 * 4;
}

/* Returns the size of all entries of an array in bytes. */
static uint32_t entry_bytes(const void *array) {
  uint32_t bytes;
  memcpy(&bytes, array, sizeof bytes);
  return le32toh(bytes);
}

size_t platform_array_bytes(const void *array, size_t size) {
  if (size < array_head) return 0;
  const size_t bytes = (size_t)array_head + entry_bytes(array);
  return bytes <= size ? bytes : 0;
}

/* Reads the entry at a position and advances the position. Returns 0 if there is no entry inside
 * the array. */
static int read_entry(const void *array, uint32_t *position, uint16_t *type, uint16_t *length,
                      void **value) {
  const uint32_t bytes = entry_bytes(array);
  uint16_t head[2];
  if (*position > bytes || bytes - *position < sizeof head) return 0;
  uint8_t *at = (uint8_t *)array + array_head + *position;
  memcpy(head, at, sizeof head);
  const uint32_t size = le16toh(head[0]);
  if (size < entry_head || footprint(size - entry_head) > bytes - *position) return 0;
  *type = le16toh(head[1]);
  *length = (uint16_t)(size - entry_head);
  *value = at + entry_head;
  *position += footprint(*length);
  return 1;
}

uint16_t tlv_aligned_data_size_get(uint32_t length) {
  return (uint16_t)footprint(length);
}

uint32_t tlv_aligned_array_add_tlv(void *array, uint32_t array_size, uint16_t type, uint16_t length,
                                   const void *value, uint32_t flag) {
  (void)flag;
  if (length > max_value) return tlv_too_long;
  if (array_size < array_head) return tlv_no_room;
  const uint32_t bytes = entry_bytes(array);
  const uint32_t capacity = array_size - array_head;
  if (bytes > capacity || capacity - bytes < footprint(length)) return tlv_no_room;
  const uint16_t head[2] = {htole16((uint16_t)(entry_head + length)), htole16(type)};
  uint8_t *at = (uint8_t *)array + array_head + bytes;
  memset(at, 0, footprint(length));
  memcpy(at, head, sizeof head);
  if (length > 0) memcpy(at + entry_head, value, length);
  const uint32_t new_bytes = htole32(bytes + footprint(length));
  memcpy(array, &new_bytes, sizeof new_bytes);
  return 0;
}

uint32_t tlv_aligned_array_get_num_tlvs(const void *array, uint32_t flag) {
  (void)flag;
  uint16_t type, length;
  void *value;
  uint32_t count = 0;
  uint32_t position = 0;
  while (position < entry_bytes(array)) {
    ++count;
    if (!read_entry(array, &position, &type, &length, &value)) break;
  }
  return count;
}

uint32_t tlv_aligned_array_get_next_tlv(const void *array, uint16_t *type, uint16_t *length,
                                        void **value, uint32_t flag, uint32_t *cursor) {
  (void)flag;
  return read_entry(array, cursor, type, length, value) ? 0 : tlv_unreadable;
}

uint32_t tlv_aligned_array_find_tlv(const void *array, uint16_t type, uint16_t *length,
                                    void **value, uint32_t flag) {
  (void)flag;
  uint16_t found;
  for (uint32_t position = 0; read_entry(array, &position, &found, length, value);) {
    if (found == type) return 0;
  }
  return tlv_not_found;
}

const char *syserr2str(uint32_t code) {
  static const char *const texts[] = {"no space in the TLV array", "value too long for a TLV",
                                      "TLV reaches past its array", "no such TLV"};
  static char other[32];
  if (code >= tlv_no_room && code <= tlv_not_found) return texts[code - tlv_no_room];
  snprintf(other, sizeof other, "error 0x%X", code);
  return other;
}
