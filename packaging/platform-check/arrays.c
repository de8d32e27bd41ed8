/* TLV arrays: tlv.h. */
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/tlv.h>
#include <draimiofaf/types.h>
#include <stdlib.h>
#include <string.h>

#include "check.h"

enum { header = STP_MCEC_TLV_ARRAY_HDR_SIZE, flag = TLV_ALIGNED_FLAG };

static const uint16_t lengths[] = {8192, 0, 1, 2, 3, 4, 5, 32, 516};
enum { entry_count = sizeof lengths / sizeof lengths[0], no_such_type = 1 };

static uint16_t type_of(size_t entry) {
  return (uint16_t)(0xFFFF - lengths[entry]);
}

static uint32_t size_of_all(void) {
  uint32_t size = header;
  for (size_t i = 0; i < entry_count; ++i) size += tlv_aligned_data_size_get(lengths[i]);
  return size;
}

/* Adds an entry whose value is a pattern at an odd address. */
static uint32_t add(void *array, uint32_t size, uint16_t type, uint16_t length) {
  uint8_t *value = malloc((size_t)length + 2);
  REQUIRE(value != NULL, "out of memory in the check itself");
  fill_pattern(value + 1, length, type);
  const uint32_t result = tlv_aligned_array_add_tlv(array, size, type, length, value + 1, flag);
  free(value);
  return result;
}

/* Fills an array in a buffer of zeros, starting with one of the entries. */
static void fill(void *array, size_t first) {
  for (size_t i = 0; i < entry_count; ++i) {
    const size_t entry = (first + i) % entry_count;
    const uint32_t result = add(array, size_of_all(), type_of(entry), lengths[entry]);
    REQUIRE(result == 0, "a value of %u bytes is refused with 0x%X", lengths[entry], result);
  }
}

static void verify_size(void) {
  for (size_t first = 0; first < entry_count; ++first) {
    uint8_t *array = guarded_buffer(size_of_all());
    fill(array, first);
    REQUIRE(add(array, size_of_all(), no_such_type, 0) != 0, "a full array accepts an entry");
  }
}

static void expect_entry(const void *array, size_t entry, uint16_t type, uint16_t length,
                         const void *value) {
  REQUIRE(type == type_of(entry) && length == lengths[entry],
          "found type %u, length %u; expected type %u, length %u", type, length, type_of(entry),
          lengths[entry]);
  const uint8_t *start = array;
  const uint8_t *at = value;
  REQUIRE(at >= start && at + length <= start + size_of_all(), "a value outside of the array");
  REQUIRE(has_pattern(value, length, type), "the value of type %u differs from the one added",
          type);
}

static void expect_entries(const void *array, size_t first) {
  const uint32_t count = tlv_aligned_array_get_num_tlvs(array, flag);
  REQUIRE(count == entry_count, "found %u entries; expected %u", count, (unsigned)entry_count);
  uint32_t cursor = 0;
  uint16_t type = 0;
  uint16_t length = 0;
  void *value = NULL;
  for (size_t i = 0; i < entry_count; ++i) {
    const size_t entry = (first + i) % entry_count;
    uint32_t result = tlv_aligned_array_get_next_tlv(array, &type, &length, &value, flag, &cursor);
    REQUIRE(result == 0, "entry %zu cannot be read: 0x%X", i, result);
    expect_entry(array, entry, type, length, value);
    result = tlv_aligned_array_find_tlv(array, type_of(entry), &length, &value, flag);
    REQUIRE(result == 0, "type %u is not found: 0x%X", type_of(entry), result);
    expect_entry(array, entry, type_of(entry), length, value);
  }
  REQUIRE(tlv_aligned_array_find_tlv(array, no_such_type, &length, &value, flag) != 0,
          "a missing type is found");
}

static void verify_values(void) {
  for (size_t first = 0; first < entry_count; ++first) {
    uint8_t *array = guarded_buffer(size_of_all());
    fill(array, first);
    expect_entries(array, first);
  }
}

static void verify_empty(void) {
  uint16_t length;
  void *value;
  const void *array = guarded_buffer(header);
  REQUIRE(tlv_aligned_array_get_num_tlvs(array, flag) == 0, "an empty array has entries");
  REQUIRE(tlv_aligned_array_find_tlv(array, 0, &length, &value, flag) != 0, "a type is found");
}

static void verify_addresses(void) {
  const uint32_t size = size_of_all();
  for (size_t shift = 0; shift < 8; ++shift) {
    uint8_t *array = (uint8_t *)guarded_buffer(size + 8) + shift;
    uint8_t *copy = guarded_buffer(size);
    fill(array, shift);
    expect_entries(array, shift);
    memcpy(copy, array, size);
    memset(array, 0xEE, size);
    expect_entries(copy, shift);
  }
}

static void verify_no_room(void) {
  const uint32_t size = size_of_all();
  uint8_t *array = guarded_buffer(size);
  uint8_t *copy = malloc(size);
  REQUIRE(copy != NULL, "out of memory in the check itself");
  fill(array, 0);
  memcpy(copy, array, size);
  REQUIRE(add(array, size, no_such_type, 4) != 0, "a full array accepts an entry");
  REQUIRE(memcmp(copy, array, size) == 0, "a refused entry changes the array");
  REQUIRE(add(guarded_buffer(header), header, no_such_type, 1) != 0,
          "a buffer with room for the header only accepts an entry");
  free(copy);
}

static void verify_long_values(void) {
  static const uint16_t long_lengths[] = {8192, 0x7FFF, 0x8000, 0xFFF0, 0xFFF8, 0xFFFB, 0xFFFF};
  const uint32_t size = 0x20000;
  for (size_t i = 0; i < sizeof long_lengths / sizeof long_lengths[0]; ++i) {
    void *array = guarded_buffer(size);
    uint16_t length = 0;
    void *value = NULL;
    if (add(array, size, 7, long_lengths[i]) != 0) {
      REQUIRE(long_lengths[i] > 8192, "a value of 8192 bytes is refused");
      REQUIRE(tlv_aligned_array_get_num_tlvs(array, flag) == 0, "a refused entry is in the array");
      continue;
    }
    REQUIRE(tlv_aligned_array_find_tlv(array, 7, &length, &value, flag) == 0 &&
                length == long_lengths[i] && has_pattern(value, length, 7),
            "a value of %u bytes is accepted but returned with changes", long_lengths[i]);
  }
}

static void verify_result_codes(void) {
  static const uint32_t codes_of_library[] = {
#define CODE(name, code) code,
      STP_MCEC_RESULT_CODES(CODE)
#undef CODE
#define CODE(name, type, scope, length, code, ...) code,
          STP_MCEC_TYPE1_PARAMETERS(CODE)
#undef CODE
  };
  uint16_t type, length;
  uint32_t cursor = 0;
  void *value;
  void *empty = guarded_buffer(header);
  const uint32_t results[] = {
      tlv_aligned_array_find_tlv(empty, no_such_type, &length, &value, flag),
      tlv_aligned_array_get_next_tlv(empty, &type, &length, &value, flag, &cursor),
      add(empty, header, no_such_type, 4)};
  for (size_t i = 0; i < sizeof results / sizeof results[0]; ++i) {
    REQUIRE(results[i] != 0, "a failure returns 0");
    for (size_t j = 0; j < sizeof codes_of_library / sizeof codes_of_library[0]; ++j) {
      REQUIRE(results[i] != codes_of_library[j], "0x%X is a code of the library", results[i]);
    }
  }
}

/* Expects the values that the readers return to be inside the array, whatever bytes it contains. */
static void expect_within(const uint8_t *array, uint32_t size, uint32_t position) {
  uint16_t type = 0;
  uint16_t length = 0;
  void *value = NULL;
  uint32_t cursor = 0;
  uint32_t left = tlv_aligned_array_get_num_tlvs(array, flag);
  REQUIRE(left <= size, "%u entries in %u bytes", left, size);
  for (; left > 0; --left) {
    if (tlv_aligned_array_get_next_tlv(array, &type, &length, &value, flag, &cursor) != 0) break;
    REQUIRE((uint8_t *)value >= array && (uint8_t *)value + length <= array + size,
            "with a wrong byte %u a value of get_next_tlv is outside of the array", position);
  }
  for (uint16_t wanted = 0; wanted < 5; ++wanted) {
    if (tlv_aligned_array_find_tlv(array, wanted, &length, &value, flag) != 0) continue;
    REQUIRE((uint8_t *)value >= array && (uint8_t *)value + length <= array + size,
            "with a wrong byte %u a value of find_tlv is outside of the array", position);
  }
}

/* Sets every byte in a range of an array to every value, one at a time. */
static void expect_safe_readers(uint8_t *array, uint32_t size, uint32_t first, uint32_t end) {
  memset(array, 0, size);
  REQUIRE(add(array, size, 1, 4) == 0 && add(array, size, 2, 6) == 0 && add(array, size, 3, 0) == 0,
          "an entry is refused");
  for (uint32_t position = first; position < end; ++position) {
    const uint8_t right = array[position];
    for (unsigned byte = 0; byte < 256; ++byte) {
      array[position] = (uint8_t)byte;
      expect_within(array, size, position);
    }
    array[position] = right;
  }
}

static uint32_t size_of_forged(void) {
  return header + (uint32_t)tlv_aligned_data_size_get(4) + tlv_aligned_data_size_get(6) +
         tlv_aligned_data_size_get(0);
}

static void verify_forged_entries(void) {
  const uint32_t size = size_of_forged();
  expect_safe_readers(guarded_buffer(size), size, header, size);
}

static void verify_forged_size(void) {
  const uint32_t size = size_of_forged();
  uint8_t *array = mtrack_alloc(STP_MCEC_LIB_SERVICE_ID, STP_MCEC_LIB_MEM_tlv_array_1_t, size);
  REQUIRE(array != NULL, "allocation of %u bytes failed", size);
  expect_safe_readers(array, size, 0, header);
}

const contract_t array_contracts[] = {
    {"tlv.size", "a buffer of the computed size has room for exactly its entries", verify_size},
    {"tlv.values", "values are returned as they were added", verify_values},
    {"tlv.empty", "a buffer of zeros is an empty array", verify_empty},
    {"tlv.address", "an array may start anywhere, and its copy is the same array",
     verify_addresses},
    {"tlv.no-room", "an entry that does not fit is refused, and the array is unchanged",
     verify_no_room},
    {"tlv.long", "values of 8192 bytes are accepted, longer ones completely or not at all",
     verify_long_values},
    {"tlv.codes", "codes of failures differ from those of the library", verify_result_codes},
    {"tlv.forged-entries", "with any byte of an entry wrong, readers stay within the array",
     verify_forged_entries},
    {"tlv.forged-size", "with any byte of its header wrong, readers stay within the block",
     verify_forged_size},
    {NULL, NULL, NULL},
};
