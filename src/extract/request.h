// The shape that all extractors share: understand the request, write the cache, hand out records
// and an array, or refuse. An extractor's own file says what it sets and, in its Rules, what
// differs on its way.
#pragma once

#include <algorithm>
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

enum class Source : uint8_t { command, update_message };

// Who is told of a failure: the user whose command is refused, the reader of the log.
enum class Told : uint8_t { user, reader, both };

// What a caller sees differ from one extractor to the next.
struct Rules {
  Source source = Source::command;
  stp_mcec_lib_mem_type_t records;
  stp_mcec_lib_mem_type_t array;
  // The records are filled and counted before the array is allocated, or once it is there.
  bool fills_records_last = false;
  // The line of a cache entry that was replaced, and of one that was added; nullptr: none.
  const char *replaced_line = nullptr;
  const char *added_line = nullptr;
  // The line of a value on its way into the array; nullptr: none.
  const char *tlv_line = nullptr;
  // The answer to a command that is none of the extractor's, with a %d for its identifier; nullptr:
  // none. It is always logged.
  const char *wrong_command = nullptr;
  // No memory for a cache entry, for the records, for the array; and a value that cannot be added.
  Told no_entry = Told::both;
  Told no_records = Told::user;
  Told no_array = Told::user;
  Told no_tlv = Told::user;
};

// One extraction under way: its rules, who is answered, where the outputs go.
struct Request {
  const Rules &rules;
  cmd_req_t *handle;  // of a command
  uint8_t **tlv_array;
  uint32_t *num_extract_info;
  uint32_t *is_cmd;
  Record **extract_info;
};

inline Request receive(const Rules &rules, void *handle, uint8_t **tlv_array,
                       uint32_t *num_extract_info, uint32_t *is_cmd, Record **extract_info) {
  return {rules,       static_cast<cmd_req_t *>(handle), tlv_array, num_extract_info, is_cmd,
          extract_info};
}

// --- understanding the request ---

// The row of a command in an extractor's table, nullptr when the command is none of its own.
template <class Row, std::size_t size>
const Row *find_command(const Row (&table)[size], uint32_t cmd_id) {
  const auto found = std::find_if(std::begin(table), std::end(table),
                                  [cmd_id](const Row &row) { return row.cmd_id == cmd_id; });
  return found != std::end(table) ? found : nullptr;
}

// Refuse a command that reached the wrong extractor.
uint32_t refuse_command(Step step, const Request &request, uint32_t cmd_id);

// An attribute's value; nothing when the request has none of it.
std::optional<Bytes> attribute(const Request &request, uint32_t attribute_id);

// The word at the start of an attribute, in host order; nothing when it is shorter than a word.
std::optional<uint32_t> word_of_attribute(Bytes value);

struct Range {
  uint32_t first;
  uint32_t last;
};

// A list of ranges, pairs of words in host order, behind a header whose second word is their
// number.
struct RangeList {
  const uint8_t *ranges;
  uint32_t count;

  Range operator[](uint32_t position) const {
    const uint8_t *range = ranges + std::size_t{position} * sizeof(Range);
    return {load<uint32_t>(range), load<uint32_t>(range + sizeof(uint32_t))};
  }
};

// The list in an attribute; nothing when the attribute is missing, or shorter than its header or
// than its number of ranges asks for.
std::optional<RangeList> range_list(const Request &request, uint32_t attribute_id,
                                    std::size_t header_size);

// --- writing the cache ---

// Put a value into the cache, with the lines of the rules. The entry, or nullptr: there was no
// memory for it, the request is refused with STP_MCEC_ERR_NO_MEMORY.
const cache::Node *put(Step step, const Request &request, uint32_t if_index, uint16_t type,
                       Bytes value);

// --- handing out ---

// The size of an array with one value.
uint32_t array_size(std::size_t value_length);

// Allocate the records and store them in extract_info. nullptr: refused.
Record *new_records(Step step, const Request &request, uint32_t count);

// Allocate an array; an empty one without a block: refused.
Block<uint8_t> new_array(Step step, const Request &request, uint32_t size);

// Say how many records there are, and whether they come from a command.
void announce(const Request &request, uint32_t count);

// Allocate the array, add the entries and store it in tlv_array, or refuse.
uint32_t hand_out_array(Step step, const Request &request, uint32_t size,
                        std::span<const Tlv> entries);

// Hand out parameters of the switch: a record and an entry for each.
uint32_t hand_out(Step step, const Request &request, uint32_t size, std::span<const Tlv> entries);

// Put one word of the switch into the cache and hand it out.
uint32_t set_word(Step step, const Request &request, uint16_t type, uint32_t value);

}  // namespace mcec::extract
