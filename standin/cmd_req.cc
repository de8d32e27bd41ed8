/*
 * The payload of a command request, words in host byte order:
 *
 *   0        4      8
 *   +--------+------+----+--------+-----+---------+--
 *   | cmd id | form | id | length | pad | value   | next attribute ...
 *   +--------+------+----+--------+-----+---------+--
 *
 * The pad, one byte or two, puts every value at an odd offset: it is read bytewise or not at all.
 */
#include "cmd_req.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "requests.h"
#include "state.h"

struct cmd_req {
  uint8_t *request;
  std::size_t size;
  std::size_t position;  // of the attribute walk
  mts_msg_t *message;
  bool identified;  // its command was asked for
};

namespace {

constexpr std::size_t head_size = 8;
constexpr std::size_t attribute_head_size = 8;

struct Answer {
  bool accepted;
  std::string text;
};

std::vector<Answer> answers;
uint32_t handle_size = 0;

uint32_t word_at(const uint8_t *at) {
  uint32_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

void append(std::vector<uint8_t> &bytes, uint32_t word) {
  const auto *at = reinterpret_cast<const uint8_t *>(&word);
  bytes.insert(bytes.end(), at, at + sizeof word);
}

struct Attribute {
  uint32_t id;
  uint32_t length;
  uint8_t *value;
};

// Where the value of an attribute starts whose head ends at a position.
std::size_t value_position(std::size_t head_end) {
  return (head_end + 1) | 1;
}

// The attribute at a position, which moves behind it; nothing at the end of the request.
std::optional<Attribute> attribute_at(const cmd_req_t &handle, std::size_t &position) {
  const std::size_t start = value_position(position + attribute_head_size);
  if (start > handle.size) return std::nullopt;
  uint8_t *at = handle.request + position;
  const Attribute attribute{word_at(at), word_at(at + 4), handle.request + start};
  if (handle.size - start < attribute.length) return std::nullopt;
  position = start + attribute.length;
  return attribute;
}

void answer(cmd_req_t *handle, Answer given) {
  bool &answered = handle->message->answered;
  if (answered) return standin::misuse("the request is answered already");
  answered = true;
  answers.push_back(std::move(given));
}

}  // namespace

namespace standin {

void reset_requests() {
  answers.clear();
  handle_size = 0;
}

}  // namespace standin

uint32_t cmd_req_handle_get_1(mts_msg_t *msg) {
  if (msg == nullptr) standin::misuse("a handle of no message");
  return std::max<uint32_t>(handle_size, sizeof(cmd_req_t));
}

// All of the buffer is written, as by a platform whose handles take it.
cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer) {
  if (msg->opcode != STP_MCEC_MTS_OPC_CMD_REQ || msg->size < head_size) return nullptr;
  if (reinterpret_cast<uintptr_t>(buffer) % 16 != 0) standin::misuse("a handle at %p", buffer);
  std::memset(buffer, 0xA5, cmd_req_handle_get_1(msg));
  return new (buffer) cmd_req_t{msg->payload(), msg->size, head_size, msg, false};
}

uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle) {
  if (std::exchange(handle->identified, true)) standin::misuse("the command is asked for again");
  return word_at(handle->request);
}

uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value,
                          uint32_t *length) {
  std::size_t position = head_size;
  while (const auto attribute = attribute_at(*handle, position)) {
    if (attribute->id != attribute_id) continue;
    *value = attribute->value;
    *length = attribute->length;
    return 0;
  }
  // Not to be read when there is none.
  *value = handle->request;
  *length = static_cast<uint32_t>(handle->size);
  return 1;
}

uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length) {
  const auto attribute = attribute_at(*handle, handle->position);
  if (!attribute) return CMD_REQ_NO_MORE_ATTRIBUTES;
  *value = attribute->value;
  *length = attribute->length;
  return attribute->id;
}

uint32_t cmd_req_action_is_set(cmd_req_t *handle) {
  return word_at(handle->request + 4) != 0 ? 1 : 0;
}

uint32_t cmd_req_action_is_del(cmd_req_t *handle) {
  return word_at(handle->request + 4) == 0 ? 1 : 0;
}

void cmd_rsp_send_ok(cmd_req_t *handle) {
  answer(handle, {true, ""});
}

void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...) {
  if (zero != 0) standin::misuse("a refusal with %u before its message", zero);
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  answer(handle, {false, text});
}

void *standin_command(uint32_t cmd_id, uint32_t form, const standin_attribute_t *attributes,
                      uint32_t count) {
  std::vector<uint8_t> payload;
  append(payload, cmd_id);
  append(payload, form);
  for (uint32_t i = 0; i < count; ++i) {
    append(payload, attributes[i].id);
    append(payload, attributes[i].length);
    payload.resize(value_position(payload.size()));
    const auto *value = static_cast<const uint8_t *>(attributes[i].value);
    payload.insert(payload.end(), value, value + attributes[i].length);
  }
  return standin_message(STP_MCEC_MTS_OPC_CMD_REQ, payload.data(), payload.size());
}

void *standin_handle(void *msg) {
  void *buffer = std::malloc(cmd_req_handle_get_1(static_cast<mts_msg_t *>(msg)));
  if (cmd_req_handle_get_2(static_cast<mts_msg_t *>(msg), buffer) != nullptr) return buffer;
  std::free(buffer);
  return nullptr;
}

void standin_handle_free(void *handle) {
  std::free(handle);
}

void standin_handle_size(uint32_t size) {
  handle_size = size;
}

uint32_t standin_answer_count() {
  return static_cast<uint32_t>(answers.size());
}

standin_answer_t standin_answer_at(uint32_t position) {
  if (position >= answers.size()) return {0, nullptr};
  return {answers[position].accepted ? 1U : 0U, answers[position].text.c_str()};
}

void standin_answers_clear() {
  answers.clear();
}
