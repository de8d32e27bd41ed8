// What every operation leans on: tracked memory, the line in the event history, TLV arrays.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "draimiofaf/types.h"
#include "foundation/wire.h"
#include "mtrack.h"
#include "tlv.h"

namespace mcec {

// --- memory ---

struct Release {
  void operator()(void *block) const { mtrack_free(block); }
};

// A block of the memory tracker that goes back unless it is handed on.
template <class Object>
using Block = std::unique_ptr<Object, Release>;

// A zero-filled block, nullptr when none is to be had.
void *zalloc(stp_mcec_lib_mem_type_t mem_type, uint32_t size);

// A zero-filled block of `header` bytes and `count` records of `record_size`; nullptr also when
// their size does not fit a 32-bit number, which a count out of a foreign array can reach.
void *zalloc_records(stp_mcec_lib_mem_type_t mem_type, uint32_t header, uint32_t count,
                     uint32_t record_size);

// --- event history ---

// One line, cut to 511 characters.
__attribute__((format(printf, 1, 2))) void hist_log(const char *format, ...);

// A line with its head: the exported operation whose step it is, and where it is logged.
#define MCEC_LOG(operation, format, ...) MCEC_LOG_AT(__LINE__, operation, format, __VA_ARGS__)

// The same for a step that several operations share, at the line that asked for it.
#define MCEC_LOG_AT(line, operation, format, ...) \
  ::mcec::hist_log("%s(%d): " format, operation, line __VA_OPT__(, ) __VA_ARGS__)

// --- TLV arrays ---

constexpr uint32_t tlv_flag = 1;

struct Tlv {
  uint16_t type;
  Bytes value;
};

inline uint32_t tlv_count(const void *array) {
  return tlv_aligned_array_get_num_tlvs(array, tlv_flag);
}

// A code of the platform's, or 0 with the entry of that type in `found`.
uint32_t tlv_find(const void *array, uint16_t type, Tlv &found);

uint32_t tlv_next(const void *array, uint32_t &cursor, Tlv &read);

inline uint32_t tlv_add(void *array, uint32_t array_size, uint16_t type, Bytes value) {
  return tlv_aligned_array_add_tlv(array, array_size, type, static_cast<uint16_t>(value.size()),
                                   value.data(), tlv_flag);
}

// What ends a walk: a result, or nothing when it goes on.
using Ended = std::optional<uint32_t>;
constexpr Ended go_on = std::nullopt;

// Read `count` entries of an array: each(tlv) for an entry, unread(code) for one that cannot be
// read, which ends the walk with what it returns.
template <class Each, class Unread>
Ended walk(const void *array, uint32_t count, Unread unread, Each each) {
  uint32_t cursor = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Tlv tlv{};
    if (const uint32_t code = tlv_next(array, cursor, tlv); code != 0) return unread(code);
    if (const Ended ended = each(tlv); ended) return ended;
  }
  return go_on;
}

// The line of an entry that cannot be read on the way into the cache; returns the code.
uint32_t log_unstored(const char *operation, uint32_t code, int line = __builtin_LINE());

}  // namespace mcec
