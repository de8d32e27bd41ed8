#include "extract/request.h"

#include <utility>

namespace mcec::extract {
namespace {

void reject_no_memory(Step step, const Request &request, bool is_logged) {
  if (is_logged) hist_log(step, "Failed malloc\n");
  cmd_rsp_send_nok(request.handle, 0, "internal error: Failed malloc");
}

}  // namespace

uint32_t reject_command(Step step, const Request &request, uint32_t cmd_id, const char *answer) {
  hist_log(step, "Invalid cmd id %d\n", cmd_id);
  cmd_rsp_send_nok(request.handle, 0, answer, cmd_id);
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
  if (!value || value->size() < 2 * sizeof(uint32_t)) return std::nullopt;
  const auto count = load<uint32_t>(value->data() + sizeof(uint32_t));
  if (count == 0) return RangeList{nullptr, 0};
  if (value->size() < header_size || count > (value->size() - header_size) / sizeof(Range)) {
    return std::nullopt;
  }
  return RangeList{value->data() + header_size, count};
}

const cache::Node *put(Step step, const Request &request, uint32_t if_index, uint16_t type,
                       Bytes value) {
  const cache::PutResult result = cache::put(if_index, type, value);
  if (result.node == nullptr) {
    reject_no_memory(step, request, true);
    return nullptr;
  }
  const char *line = result.added ? request.rules.added_line : request.rules.replaced_line;
  if (line != nullptr) hist_log(step, "%s\n", line);
  return result.node;
}

uint32_t array_size(std::size_t value_length) {
  return uint32_t{tlv_aligned_data_size_get(static_cast<uint32_t>(value_length))} +
         STP_MCEC_TLV_ARRAY_HDR_SIZE;
}

Record *new_records(Step step, const Request &request, uint32_t count) {
  auto *records =
      static_cast<Record *>(zalloc_records(request.rules.records, 0, count, sizeof(Record)));
  *request.extract_info = records;
  if (records == nullptr) reject_no_memory(step, request, request.rules.logs_records_failure);
  return records;
}

void set_record_count(const Request &request, uint32_t count) {
  *request.num_extract_info = count;
  *request.is_cmd = 1;
}

void fill_records(const Request &request, Record *records, std::span<const Tlv> entries) {
  set_record_count(request, static_cast<uint32_t>(entries.size()));
  for (const Tlv &entry : entries) {
    *records++ = {.type = entry.type, .valid = 1, .is_global = 1, .if_index = 0};
  }
}

Block<uint8_t> new_array(Step step, const Request &request, uint32_t size) {
  Block<uint8_t> array(static_cast<uint8_t *>(zalloc(request.rules.array, size)));
  if (!array) reject_no_memory(step, request, request.rules.logs_array_failure);
  return array;
}

uint32_t return_array(Step step, const Request &request, Block<uint8_t> array, uint32_t size,
                      std::span<const Tlv> entries) {
  if (!array) return STP_MCEC_RESULT_NO_BLOCK;
  for (const Tlv &entry : entries) {
    const uint32_t code = tlv_add(array.get(), size, entry.type, entry.value);
    if (code == 0) continue;
    if (request.rules.logs_array_failure) hist_log(step, "Failed to TLV\n");
    array.reset();
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed TLV add");
    return code;
  }
  *request.tlv_array = array.release();
  return 0;
}

uint32_t set_word(Step step, const Request &request, uint16_t type, uint32_t value) {
  const Word word = to_network(value);
  if (put(step, request, 0, type, word) == nullptr) return STP_MCEC_ERR_NO_MEMORY;
  Record *record = new_records(step, request, 1);
  if (record == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  const Tlv entry{type, word};
  fill_records(request, record, {&entry, 1});
  const uint32_t size = array_size(word.size());
  return return_array(step, request, new_array(step, request, size), size, {&entry, 1});
}

}  // namespace mcec::extract
