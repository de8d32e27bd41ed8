// What every operation uses: tracked memory, lines of the event history, TLV arrays, the
// multi-chassis database.
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

// A block of the memory tracker that goes back unless it is handed on.
template <class Object>
using Block = std::unique_ptr<Object, Release>;

// By memory type, STP_MCEC_LIB_MEM_MAX included.
extern const char *const mem_type_names[STP_MCEC_LIB_MEM_MAX + 1];

// A zero-filled block, nullptr when none is to be had.
void *zalloc(stp_mcec_lib_mem_type_t mem_type, uint32_t size);

// A zero-filled block of `header` bytes and `count` records of `record_size`; nullptr also when
// their size does not fit a 32-bit number, which a count out of a foreign array can reach.
void *zalloc_records(stp_mcec_lib_mem_type_t mem_type, uint32_t header, uint32_t count,
                     uint32_t record_size);

// A step of an exported operation. The lines that are logged for it begin with the operation's name
// and the line of its source that asks for the step, also in a function that several operations
// share.
struct Step {
  const char *operation;
  int line;
};

// The step that the calling operation takes here.
constexpr Step here(const char *operation = __builtin_FUNCTION(), int line = __builtin_LINE()) {
  return {operation, line};
}

constexpr Step no_head = {nullptr, 0};

// One line, cut to 511 characters.
__attribute__((format(printf, 2, 3))) void hist_log(Step step, const char *format, ...);

// The line of a failure of the TLV library, a format for its code and the text of that; returns the
// code.
uint32_t log_failure(Step step, const char *format, uint32_t code);

// Of an entry that cannot be read: on its way into the cache, and in a check.
inline constexpr char not_retrieved[] = "Failed (rc=0x%x, %s) to retrieve tlv\n";
inline constexpr char not_read[] = "failed (rc=0x%x, %s) get_next_tlv\n";

struct Tlv {
  uint16_t type;
  Bytes value;
};

inline uint32_t tlv_count(const void *array) {
  return tlv_aligned_array_get_num_tlvs(array, TLV_ALIGNED_FLAG);
}

// A code of the platform's, or 0 with the entry of that type in `found`.
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
// An entry that cannot be read ends it too, and leaves the code of the platform.
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

// The multi-chassis port channel of an interface; STP_MCEC_ERR_NO_MCEC_INFO when it has none.
uint32_t find_channel(uint32_t if_index, uint32_t &channel);

bool has_trunk();

}  // namespace mcec
