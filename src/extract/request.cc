#include "extract/request.h"

#include <utility>

namespace mcec::extract {
namespace {

bool to_reader(Told told) {
  return told != Told::user;
}

bool to_user(Told told) {
  return told != Told::reader;
}

void tell_no_memory(Told told, Step step, const Request &request) {
  if (to_reader(told)) hist_log(step, "Failed malloc\n");
  if (to_user(told)) cmd_rsp_send_nok(request.handle, 0, "internal error: Failed malloc");
}

uint32_t fill_array(Step step, const Request &request, Block<uint8_t> array, uint32_t size,
                    std::span<const Tlv> entries) {
  const Rules &rules = request.rules;
  for (const Tlv &entry : entries) {
    if (rules.tlv_line != nullptr) hist_log(step, {rules.tlv_line, "\n"});
    const uint32_t code = tlv_add(array.get(), size, entry.type, entry.value);
    if (code == 0) continue;
    if (to_reader(rules.no_tlv)) hist_log(step, "Failed to TLV\n");
    array.reset();
    if (to_user(rules.no_tlv))
      cmd_rsp_send_nok(request.handle, 0, "internal error: Failed TLV add");
    return code;
  }
  *request.tlv_array = array.release();
  return 0;
}

}  // namespace

uint32_t refuse_command(Step step, const Request &request, uint32_t cmd_id) {
  hist_log(step, "Invalid cmd id %d\n", cmd_id);
  const char *const answer = request.rules.wrong_command;
  if (answer != nullptr) cmd_rsp_send_nok(request.handle, 0, answer, cmd_id);
  return STP_MCEC_ERR_INVALID_ARG;
}

std::optional<Bytes> attribute(const Request &request, uint32_t attribute_id) {
  void *value = nullptr;
  uint32_t length = 0;
  if (cmd_req_attr_get(request.handle, attribute_id, &value, &length) != 0) return std::nullopt;
  return Bytes{static_cast<const uint8_t *>(value), length};
}

std::optional<uint32_t> word_of_attribute(Bytes value) {
  if (value.size() < sizeof(uint32_t)) return std::nullopt;
  return load<uint32_t>(value.data());
}

std::optional<RangeList> range_list(const Request &request, uint32_t attribute_id,
                                    std::size_t header_size) {
  const std::optional<Bytes> value = attribute(request, attribute_id);
  if (!value || value->size() < header_size) return std::nullopt;
  const auto count = load<uint32_t>(value->data() + sizeof(uint32_t));
  if (count > (value->size() - header_size) / sizeof(Range)) return std::nullopt;
  return RangeList{value->data() + header_size, count};
}

const cache::Node *put(Step step, const Request &request, uint32_t if_index, uint16_t type,
                       Bytes value) {
  const cache::Put done = cache::put(if_index, type, value);
  if (done.node == nullptr) {
    tell_no_memory(request.rules.no_entry, step, request);
    return nullptr;
  }
  const char *line = done.added ? request.rules.added_line : request.rules.replaced_line;
  if (line != nullptr) hist_log(step, {line, "\n"});
  return done.node;
}

uint32_t array_size(std::size_t value_length) {
  return uint32_t{tlv_aligned_data_size_get(static_cast<uint32_t>(value_length))} +
         STP_MCEC_TLV_ARRAY_HDR_SIZE;
}

Record *new_records(Step step, const Request &request, uint32_t count) {
  const Rules &rules = request.rules;
  auto *records = static_cast<Record *>(zalloc_records(rules.records, 0, count, sizeof(Record)));
  *request.extract_info = records;
  if (records == nullptr) tell_no_memory(rules.no_records, step, request);
  return records;
}

Block<uint8_t> new_array(Step step, const Request &request, uint32_t size) {
  Block<uint8_t> array(static_cast<uint8_t *>(zalloc(request.rules.array, size)));
  if (!array) tell_no_memory(request.rules.no_array, step, request);
  return array;
}

void announce(const Request &request, uint32_t count) {
  *request.num_extract_info = count;
  *request.is_cmd = request.rules.source == Source::command ? 1 : 0;
}

uint32_t hand_out_array(Step step, const Request &request, uint32_t size,
                        std::span<const Tlv> entries) {
  Block<uint8_t> array = new_array(step, request, size);
  if (!array) return STP_MCEC_RESULT_NO_BLOCK;
  return fill_array(step, request, std::move(array), size, entries);
}

uint32_t hand_out(Step step, const Request &request, uint32_t size, std::span<const Tlv> entries) {
  const auto count = static_cast<uint32_t>(entries.size());
  Record *records = new_records(step, request, count);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  const auto fill_records = [&] {
    announce(request, count);
    for (const Tlv &entry : entries) *records++ = {entry.type, 1, 1, 0};
  };
  if (!request.rules.fills_records_last) fill_records();
  Block<uint8_t> array = new_array(step, request, size);
  if (!array) return STP_MCEC_RESULT_NO_BLOCK;
  if (request.rules.fills_records_last) fill_records();
  return fill_array(step, request, std::move(array), size, entries);
}

uint32_t set_word(Step step, const Request &request, uint16_t type, uint32_t value) {
  const Word word = to_network(value);
  if (put(step, request, 0, type, word) == nullptr) return STP_MCEC_ERR_NO_MEMORY;
  const Tlv entry{type, word};
  return hand_out(step, request, array_size(word.size()), {&entry, 1});
}

}  // namespace mcec::extract
