// What the extractors of commands share: read the request, write the cache, hand out records and an
// array, or refuse. An extractor's own file has the rest, and what differs in these steps as its
// Rules.
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

// A failure refuses the command with an answer, and is logged unless a flag says otherwise.
struct Rules {
  stp_mcec_lib_mem_type_t records;
  stp_mcec_lib_mem_type_t array;
  // The line of a cache entry that was replaced, and of one that was added; nullptr: none.
  const char *replaced_line = nullptr;
  const char *added_line = nullptr;
  // No memory for the records; no memory for the array, or an entry that cannot be added to it.
  bool logs_no_records = false;
  bool logs_no_array = false;
};

// One extraction under way: its rules, the request that is answered, the outputs.
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

// The row of a command in an extractor's table, nullptr when the command is none of its own.
template <class Row, std::size_t size>
const Row *find_command(const Row (&table)[size], uint32_t cmd_id) {
  const auto found = std::ranges::find(table, cmd_id, &Row::cmd_id);
  return found != std::end(table) ? found : nullptr;
}

// The parameter that a command sets, of several the first.
constexpr uint16_t parameter_set_by(uint32_t cmd_id) {
  switch (cmd_id) {
#define MCEC_ROW(name, id, extractor, gate, sets) \
  case id:                                        \
    return static_cast<uint16_t>(std::countr_zero(sets));
    STP_MCEC_COMMANDS(MCEC_ROW)  // NOLINT(bugprone-branch-clone): commands of one parameter
#undef MCEC_ROW
    default:
      return 0;
  }
}

// Refuse a command that reached the wrong extractor; the answer has a %d for its identifier.
uint32_t refuse_command(Step step, const Request &request, uint32_t cmd_id, const char *answer);

// An attribute's value; nothing when the request has none of it.
std::optional<Bytes> attribute(const Request &request, uint32_t attribute_id);

// The word at the start of an attribute, in host order; nothing when it is shorter than a word.
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

// The list in an attribute, behind a header whose second word is the number of ranges. Nothing when
// the attribute is missing, or shorter than that word or than its number of ranges requires.
std::optional<RangeList> range_list(const Request &request, uint32_t attribute_id,
                                    std::size_t header_size);

// Put a value into the cache, with the lines of the rules. The entry, or nullptr: there was no
// memory for it, the request is refused with STP_MCEC_ERR_NO_MEMORY.
const cache::Node *put(Step step, const Request &request, uint32_t if_index, uint16_t type,
                       Bytes value);

// The size of an array with one value.
uint32_t array_size(std::size_t value_length);

// Allocate the records and store them in extract_info. nullptr: refused.
Record *new_records(Step step, const Request &request, uint32_t count);

// Store how many records there are, and that they come from a command.
void announce(const Request &request, uint32_t count);

// The records of parameters of the switch.
void fill_records(const Request &request, Record *records, std::span<const Tlv> entries);

// Allocate an array; an empty one without a block: refused.
Block<uint8_t> new_array(Step step, const Request &request, uint32_t size);

// Add the entries to the array and store it in tlv_array, or refuse.
uint32_t hand_out(Step step, const Request &request, Block<uint8_t> array, uint32_t size,
                  std::span<const Tlv> entries);

// Put one word of the switch into the cache and hand it out.
uint32_t set_word(Step step, const Request &request, uint16_t type, uint32_t value);

}  // namespace mcec::extract
