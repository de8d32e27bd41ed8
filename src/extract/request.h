// Shared by the extractors of commands: read the request, write the cache, return records and an
// array, or reject the command. An extractor's own file has the rest; its Rules are the differences
// in these steps.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>

#include "cache/store.h"
#include "cmd_req.h"
#include "draimiofaf/types.h"
#include "foundation/runtime.h"

namespace mcec::extract {

using Record = mcecm_app_cmd_extract_info_t;

// The properties of an extractor. Every failure rejects the command with an answer; flags select
// which failures are logged.
struct Rules {
  stp_mcec_lib_mem_type_t records;
  stp_mcec_lib_mem_type_t array;
  // The log lines for a replaced and for an added cache entry; nullptr: not logged.
  const char *replaced_line = nullptr;
  const char *added_line = nullptr;
  // Log failures to allocate the records; to allocate the array or to add an entry to it.
  bool logs_records_failure = false;
  bool logs_array_failure = false;
};

// The state of one extraction: its rules, its request, its outputs.
struct Request {
  const Rules &rules;
  cmd_req_t *handle;
  uint8_t **tlv_array;
  uint32_t *num_extract_info;
  uint32_t *is_cmd;
  Record **extract_info;
};

inline Request receive(const Rules &rules, void *handle, uint8_t **tlv_array,
                       uint32_t *num_extract_info, uint32_t *is_cmd, Record **extract_info) {
  return {.rules = rules,
          .handle = static_cast<cmd_req_t *>(handle),
          .tlv_array = tlv_array,
          .num_extract_info = num_extract_info,
          .is_cmd = is_cmd,
          .extract_info = extract_info};
}

// Returns the row of a command in a table, or nullptr if there is none.
template <class Row, std::size_t size>
const Row *find_command(const Row (&table)[size], uint32_t cmd_id) {
  const auto found = std::ranges::find(table, cmd_id, &Row::cmd_id);
  return found != std::end(table) ? found : nullptr;
}

// Returns the parameter that a command sets; the first if there are several.
constexpr uint16_t parameter_set_by(uint32_t cmd_id) {
  switch (cmd_id) {
#define MCEC_ROW(name, id, extractor, gate, sets) \
  case id:                                        \
    return static_cast<uint16_t>(std::countr_zero(sets));
    STP_MCEC_COMMANDS(MCEC_ROW)  // NOLINT(bugprone-branch-clone): several commands per parameter
#undef MCEC_ROW
    default:
      return 0;
  }
}

// Rejects a command that was dispatched to the wrong extractor; the answer has a %d for its
// identifier.
uint32_t reject_command(Step step, const Request &request, uint32_t cmd_id, const char *answer);

// Returns the value of an attribute, or empty if the request does not have it.
std::optional<Bytes> attribute(const Request &request, uint32_t attribute_id);

// Returns the word at the start of an attribute in host order, or empty if it is shorter than a
// word.
std::optional<uint32_t> word_of_attribute(Bytes value);

struct Range {
  uint32_t first;
  uint32_t last;
};

// A list of ranges, pairs of words in host order.
struct RangeList {
  const uint8_t *ranges;
  uint32_t count;

  Range operator[](uint32_t position) const {
    return load<Range>(ranges + std::size_t{position} * sizeof(Range));
  }
};

// Returns the list in an attribute, after a header whose second word is the number of ranges. Empty
// if the attribute is missing, or too short for that word or for its number of ranges.
std::optional<RangeList> range_list(const Request &request, uint32_t attribute_id,
                                    std::size_t header_size);

// Sets a value in the cache, and logs the line of the rules. Returns the entry, or nullptr if
// memory is exhausted: then the request has been rejected and the result is STP_MCEC_ERR_NO_MEMORY.
const cache::Node *put(Step step, const Request &request, uint32_t if_index, uint16_t type,
                       Bytes value);

// Returns the size of an array with one value.
uint32_t array_size(std::size_t value_length);

// Allocates the records and stores them in extract_info. nullptr: the request has been rejected.
Record *new_records(Step step, const Request &request, uint32_t count);

// Stores the number of records, and that they are from a command.
void set_record_count(const Request &request, uint32_t count);

// Writes the records of parameters of the switch.
void fill_records(const Request &request, Record *records, std::span<const Tlv> entries);

// Allocates an array. nullptr: the request has been rejected.
Block<uint8_t> new_array(Step step, const Request &request, uint32_t size);

// Adds the entries to the array and stores it in tlv_array, or rejects the request.
uint32_t return_array(Step step, const Request &request, Block<uint8_t> array, uint32_t size,
                      std::span<const Tlv> entries);

// Sets one word of the switch in the cache and returns it.
uint32_t set_word(Step step, const Request &request, uint16_t type, uint32_t value);

}  // namespace mcec::extract
