// Messages: update messages with a payload, and command requests with their attributes.

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

#include "cmd_req.h"
#include "internal.h"
#include "mts.h"

namespace {

// Bytes at an odd address: reveals aligned accesses.
struct OddBytes {
  std::vector<uint8_t> buffer;

  OddBytes(const void *bytes, std::size_t size) : buffer(size + 1) {
    if (size > 0) std::memcpy(data(), bytes, size);
  }
  uint8_t *data() { return buffer.data() + 1; }
  std::size_t size() const { return buffer.size() - 1; }
};

struct Attribute {
  uint32_t id;
  OddBytes value;
};

struct Answer {
  bool accepted;
  std::string text;
};

std::vector<Answer> answers;
uint32_t handle_size = 0;

}  // namespace

struct mts_msg {
  uint32_t opcode;
  std::optional<OddBytes> payload = {};
  bool is_request = false;
  uint32_t cmd_id = 0;
  bool is_positive = false;
  std::vector<Attribute> attributes = {};
  bool is_answered = false;
};

struct cmd_req {
  mts_msg_t *message;
  std::size_t next = 0;        // position in the attributes
  bool is_identified = false;  // its command identifier was read
};

namespace {

void answer(cmd_req_t *handle, Answer new_answer) {
  if (std::exchange(handle->message->is_answered, true)) {
    return standin::misuse("the request is already answered");
  }
  answers.push_back(std::move(new_answer));
}

void read_attribute(Attribute &attribute, void **value, uint32_t *length) {
  *value = attribute.value.data();
  *length = static_cast<uint32_t>(attribute.value.size());
}

}  // namespace

uint32_t mts_opc_get(const mts_msg_t *msg) {
  return msg->opcode;
}

const char *mts_opc_name_get(uint32_t opcode) {
  switch (opcode) {
    case STP_MCEC_MTS_OPC_CMD_REQ:
      return "MTS_OPC_CMD_REQ";
    case STP_MCEC_MTS_OPC_TYPE1_UPD:
      return "MTS_OPC_STP_TYPE1_UPD";
    default:
      return "MTS_OPC_UNKNOWN";
  }
}

void *mts_payload_get(mts_msg_t *msg) {
  return msg->payload ? msg->payload->data() : nullptr;
}

uint32_t cmd_req_handle_get_1(mts_msg_t *msg) {
  if (msg == nullptr) standin::misuse("a handle for a null message");
  return std::max<uint32_t>(handle_size, sizeof(cmd_req_t));
}

// Writes the whole buffer, like a platform whose handles need all of it.
cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer) {
  if (!msg->is_request) return nullptr;
  if (reinterpret_cast<uintptr_t>(buffer) % 16 != 0) {
    standin::misuse("the handle at %p is not aligned to 16", buffer);
  }
  std::memset(buffer, 0xA5, cmd_req_handle_get_1(msg));
  return new (buffer) cmd_req_t{msg};
}

uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle) {
  if (std::exchange(handle->is_identified, true)) {
    standin::misuse("the command identifier is read twice");
  }
  return handle->message->cmd_id;
}

uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value,
                          uint32_t *length) {
  for (Attribute &attribute : handle->message->attributes) {
    read_attribute(attribute, value, length);
    if (attribute.id == attribute_id) return 0;
  }
  // The library must not read these values.
  *length = UINT32_MAX;
  return 1;
}

uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length) {
  std::vector<Attribute> &attributes = handle->message->attributes;
  if (handle->next == attributes.size()) return CMD_REQ_NO_MORE_ATTRIBUTES;
  read_attribute(attributes[handle->next], value, length);
  return attributes[handle->next++].id;
}

uint32_t cmd_req_action_is_set(cmd_req_t *handle) {
  return handle->message->is_positive ? 1 : 0;
}

uint32_t cmd_req_action_is_del(cmd_req_t *handle) {
  return handle->message->is_positive ? 0 : 1;
}

void cmd_rsp_send_ok(cmd_req_t *handle) {
  answer(handle, {true, ""});
}

void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...) {
  if (zero != 0) standin::misuse("the second argument of a refusal is %u; expected 0", zero);
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  answer(handle, {false, text});
}

void *standin_message(uint32_t opcode, const void *payload, size_t size) {
  auto *message = new mts_msg_t{.opcode = opcode};
  if (payload != nullptr) {
    message->payload.emplace(payload, size);
    standin::add_extent(mts_payload_get(message), size);
  }
  return message;
}

void *standin_command(uint32_t cmd_id, uint32_t form, const standin_attribute_t *attributes,
                      uint32_t count) {
  auto *message = new mts_msg_t{.opcode = STP_MCEC_MTS_OPC_CMD_REQ,
                                .is_request = true,
                                .cmd_id = cmd_id,
                                .is_positive = form != 0};
  for (uint32_t i = 0; i < count; ++i) {
    message->attributes.push_back(
        {attributes[i].id, OddBytes(attributes[i].value, attributes[i].length)});
  }
  return message;
}

void standin_message_free(void *msg) {
  auto *message = static_cast<mts_msg_t *>(msg);
  standin::remove_extent(mts_payload_get(message));
  delete message;
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
