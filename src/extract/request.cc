#include "extract/request.h"

#include <utility>

#include "cmd_req.h"

namespace mcec::extract {
namespace {

void refuse_malloc(const Request &request, bool logged) {
  if (logged) MCEC_LOG(request.operation, "Failed malloc\n");
  if (request.source == Source::command) {
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed malloc");
  }
}

uint32_t fill_array(const Request &request, const Rules &rules, Block<uint8_t> array, uint32_t size,
                    std::span<const Tlv> entries) {
  for (const Tlv &entry : entries) {
    if (rules.tlv_line != nullptr) MCEC_LOG(request.operation, "%s\n", rules.tlv_line);
    const uint32_t code = tlv_add(array.get(), size, entry.type, entry.value);
    if (code == 0) continue;
    if (rules.logs_no_tlv) MCEC_LOG(request.operation, "Failed to TLV\n");
    array.reset();
    cmd_rsp_send_nok(request.handle, 0, "internal error: Failed TLV add");
    return code;
  }
  *request.tlv_array = array.release();
  return 0;
}

}  // namespace

uint32_t refuse_command(const char *operation, void *handle, uint32_t cmd_id, const char *answer) {
  MCEC_LOG(operation, "Invalid cmd id %d\n", cmd_id);
  cmd_rsp_send_nok(handle, 0, answer, cmd_id);
  return STP_MCEC_ERR_INVALID_ARG;
}

std::optional<Bytes> attribute(void *handle, uint32_t attribute_id) {
  void *value = nullptr;
  uint32_t length = 0;
  if (cmd_req_attr_get(handle, attribute_id, &value, &length) != 0) return std::nullopt;
  return Bytes{static_cast<const uint8_t *>(value), length};
}

std::optional<uint32_t> word_of_attribute(Bytes value) {
  if (value.size() < sizeof(uint32_t)) return std::nullopt;
  return load<uint32_t>(value.data());
}

std::optional<RangeList> range_list(void *handle, uint32_t attribute_id, std::size_t header_size) {
  const std::optional<Bytes> value = attribute(handle, attribute_id);
  if (!value || value->size() < header_size) return std::nullopt;
  const auto count = load<uint32_t>(value->data() + sizeof(uint32_t));
  if (count > (value->size() - header_size) / sizeof(Range)) return std::nullopt;
  return RangeList{value->data() + header_size, count};
}

const cache::Node *put(const Request &request, const Rules &rules, uint32_t if_index, uint16_t type,
                       Bytes value) {
  const cache::Put done = cache::put(if_index, type, value);
  if (done.node == nullptr) {
    refuse_malloc(request, true);
    return nullptr;
  }
  const char *line = done.added ? rules.added_line : rules.replaced_line;
  if (line != nullptr) MCEC_LOG(request.operation, "%s\n", line);
  return done.node;
}

uint32_t array_size(std::size_t value_length) {
  return uint32_t{tlv_aligned_data_size_get(static_cast<uint32_t>(value_length))} +
         STP_MCEC_TLV_ARRAY_HDR_SIZE;
}

Record *new_records(const Request &request, const Rules &rules, uint32_t count) {
  auto *records = static_cast<Record *>(zalloc_records(rules.records, 0, count, sizeof(Record)));
  *request.extract_info = records;
  if (records == nullptr) refuse_malloc(request, rules.logs_no_records);
  return records;
}

Block<uint8_t> new_array(const Request &request, const Rules &rules, uint32_t size) {
  Block<uint8_t> array(static_cast<uint8_t *>(zalloc(rules.array, size)));
  if (!array) refuse_malloc(request, rules.logs_no_array);
  return array;
}

void announce(const Request &request, uint32_t count) {
  *request.num_extract_info = count;
  *request.is_cmd = request.source == Source::command ? 1 : 0;
}

uint32_t hand_out_array(const Request &request, const Rules &rules, uint32_t size,
                        std::span<const Tlv> entries) {
  Block<uint8_t> array = new_array(request, rules, size);
  if (!array) return STP_MCEC_RESULT_NO_BLOCK;
  return fill_array(request, rules, std::move(array), size, entries);
}

uint32_t hand_out(const Request &request, const Rules &rules, uint32_t size,
                  std::span<const Tlv> entries) {
  const auto count = static_cast<uint32_t>(entries.size());
  Record *records = new_records(request, rules, count);
  if (records == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  const auto fill_records = [&] {
    announce(request, count);
    for (const Tlv &entry : entries) *records++ = {entry.type, 1, 1, 0};
  };
  if (!rules.array_comes_first) fill_records();
  Block<uint8_t> array = new_array(request, rules, size);
  if (!array) return STP_MCEC_RESULT_NO_BLOCK;
  if (rules.array_comes_first) fill_records();
  return fill_array(request, rules, std::move(array), size, entries);
}

uint32_t set_word(const Request &request, const Rules &rules, uint16_t type, uint32_t value) {
  const Word word = to_network(value);
  if (put(request, rules, 0, type, word) == nullptr) return STP_MCEC_ERR_NO_MEMORY;
  const Tlv entry{type, word};
  return hand_out(request, rules, array_size(word.size()), {&entry, 1});
}

}  // namespace mcec::extract
