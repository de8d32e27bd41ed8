// Services for all operations: tracked memory, event history, TLV arrays, multi-chassis database.
#pragma once

#include <cstdint>
#include <memory>

#include "draimiofaf/types.h"
#include "foundation/wire.h"
#include "mtrack.h"
#include "tlv.h"

namespace mcec {

struct Release {
  void operator()(void *block) const { mtrack_free(block); }
};

// A block of the memory tracker, freed unless released to another owner.
template <class Object>
using Block = std::unique_ptr<Object, Release>;

// Indexed by memory type, including STP_MCEC_LIB_MEM_MAX.
extern const char *const mem_type_names[STP_MCEC_LIB_MEM_MAX + 1];

// Returns a zero-filled block, or nullptr if the allocation fails.
void *zalloc(stp_mcec_lib_mem_type_t mem_type, uint32_t size);

// Returns a zero-filled block of `header` bytes and `count` records of `record_size`. Returns
// nullptr also if the size does not fit in 32 bits, which a count from a received array can cause.
void *zalloc_records(stp_mcec_lib_mem_type_t mem_type, uint32_t header, uint32_t count,
                     uint32_t record_size);

// A step of an exported operation. Its log lines begin with the name of the operation and the
// source line of the step, also if a function shared by several operations logs them.
struct Step {
  const char *operation;
  int line;
};

// Returns the step at this place of the calling operation.
constexpr Step here(const char *operation = __builtin_FUNCTION(), int line = __builtin_LINE()) {
  return {operation, line};
}

constexpr Step no_prefix = {nullptr, 0};

// Logs one line, truncated to 511 characters.
__attribute__((format(printf, 2, 3))) void hist_log(Step step, const char *format, ...);

// Logs a failure of the TLV library and returns its code. The format has two arguments: the code
// and its text.
uint32_t log_failure(Step step, const char *format, uint32_t code);

// Lines for an entry that cannot be read: while filling the cache, and in a check.
inline constexpr char not_retrieved[] = "Failed (rc=0x%x, %s) to retrieve tlv\n";
inline constexpr char not_read[] = "failed (rc=0x%x, %s) get_next_tlv\n";

struct Tlv {
  uint16_t type;
  Bytes value;
};

inline uint32_t tlv_count(const void *array) {
  return tlv_aligned_array_get_num_tlvs(array, TLV_ALIGNED_FLAG);
}

// Finds the entry of a type. Returns 0 and sets `found`, or returns a code of the platform.
uint32_t tlv_find(const void *array, uint16_t type, Tlv &found);

inline uint32_t tlv_add(void *array, uint32_t array_size, uint16_t type, Bytes value) {
  return tlv_aligned_array_add_tlv(array, array_size, type, static_cast<uint16_t>(value.size()),
                                   value.data(), TLV_ALIGNED_FLAG);
}

// A walk over the entries of an array:
//
//   Walk walk = walk_over(array);
//   for (Tlv tlv; next(walk, tlv);) ...
//
// It also ends at an entry that cannot be read; `code` is then the platform's code, else 0.
struct Walk {
  const void *array;
  uint32_t count;  // of entries
  uint32_t read = 0;
  uint32_t cursor = 0;
  uint32_t code = 0;
};

inline Walk walk_over(const void *array) {
  return {array, tlv_count(array)};
}

bool next(Walk &walk, Tlv &tlv);

// Finds the multi-chassis port channel of an interface. Returns STP_MCEC_ERR_NO_MCEC_INFO if it has
// none.
uint32_t find_channel(uint32_t if_index, uint32_t &channel);

bool has_trunk();

}  // namespace mcec
