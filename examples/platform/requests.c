/*
 * Messages. The payload of a command request is a TLV array of its own: an entry with the
 * identifier and the form, then two for each attribute, its identifier and its value. Words are in
 * host byte order.
 */
#include <draimiofaf/platform/cmd_req.h>
#include <draimiofaf/platform/tlv.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform.h"

enum { entry_command = 1, entry_attribute = 2, entry_value = 3 };
enum { array_head = 4, max_value = 0xFFF8 };

struct mts_msg {
  uint32_t opcode;
  uint32_t has_payload;
  uint32_t size; /* of the payload */
  uint32_t is_answered;
  char answer[256];
  unsigned char payload[];
};

struct cmd_req {
  mts_msg_t *message;
  uint32_t cursor;  /* of the walk over the attributes */
  uint32_t entries; /* that it has not seen */
};

static uint32_t word_at(const void *at) {
  uint32_t word;
  memcpy(&word, at, sizeof word);
  return word;
}

static mts_msg_t *new_message(uint32_t opcode, uint32_t size) {
  mts_msg_t *message = calloc(1, sizeof *message + size);
  if (message == NULL) return NULL;
  message->opcode = opcode;
  message->has_payload = 1;
  message->size = size;
  return message;
}

mts_msg_t *platform_message(uint32_t opcode, const void *payload, uint32_t size) {
  mts_msg_t *message = new_message(opcode, size);
  if (message == NULL) return NULL;
  message->has_payload = payload != NULL;
  if (size > 0) memcpy(message->payload, payload, size);
  return message;
}

mts_msg_t *platform_command(uint32_t cmd_id, uint32_t is_positive,
                            const platform_attribute_t *attributes, size_t count) {
  const uint32_t head[2] = {cmd_id, is_positive};
  const platform_attribute_t *const end = attributes + count;
  uint32_t size = array_head + tlv_aligned_data_size_get(sizeof head);
  for (const platform_attribute_t *each = attributes; each < end; ++each) {
    if (each->length > max_value || size > UINT32_MAX / 2) return NULL;
    size += tlv_aligned_data_size_get(sizeof each->id) + tlv_aligned_data_size_get(each->length);
  }
  mts_msg_t *message = new_message(STP_MCEC_MTS_OPC_CMD_REQ, size);
  if (message == NULL) return NULL;
  void *const array = message->payload;
  tlv_aligned_array_add_tlv(array, size, entry_command, sizeof head, head, TLV_ALIGNED_FLAG);
  for (const platform_attribute_t *each = attributes; each < end; ++each) {
    tlv_aligned_array_add_tlv(array, size, entry_attribute, sizeof each->id, &each->id,
                              TLV_ALIGNED_FLAG);
    tlv_aligned_array_add_tlv(array, size, entry_value, (uint16_t)each->length, each->value,
                              TLV_ALIGNED_FLAG);
  }
  return message;
}

const char *platform_answer(const mts_msg_t *msg) {
  return msg->is_answered != 0 ? msg->answer : NULL;
}

void platform_message_free(mts_msg_t *msg) {
  free(msg);
}

uint32_t mts_opc_get(const mts_msg_t *msg) {
  return msg->opcode;
}

const char *mts_opc_name_get(uint32_t opcode) {
  return opcode == STP_MCEC_MTS_OPC_CMD_REQ     ? "command request"
         : opcode == STP_MCEC_MTS_OPC_TYPE1_UPD ? "type-1 update"
                                                : "unknown message";
}

void *mts_payload_get(mts_msg_t *msg) {
  return msg->has_payload != 0 ? msg->payload : NULL;
}

uint32_t cmd_req_handle_get_1(mts_msg_t *msg) {
  (void)msg;
  return sizeof(cmd_req_t);
}

cmd_req_t *cmd_req_handle_get_2(mts_msg_t *message, void *buffer) {
  uint16_t length;
  void *value;
  if (message->opcode != STP_MCEC_MTS_OPC_CMD_REQ || message->has_payload == 0 ||
      platform_array_bytes(message->payload, message->size) == 0 ||
      tlv_aligned_array_find_tlv(message->payload, entry_command, &length, &value,
                                 TLV_ALIGNED_FLAG) != 0 ||
      length != 2 * sizeof(uint32_t)) {
    return NULL;
  }
  cmd_req_t *handle = buffer;
  *handle =
      (cmd_req_t){message, 0, tlv_aligned_array_get_num_tlvs(message->payload, TLV_ALIGNED_FLAG)};
  return handle;
}

/* A word of the first entry, which the message of every handle has. */
static uint32_t command_word(cmd_req_t *handle, size_t position) {
  uint16_t length;
  void *value = NULL;
  tlv_aligned_array_find_tlv(handle->message->payload, entry_command, &length, &value,
                             TLV_ALIGNED_FLAG);
  return word_at((const unsigned char *)value + position * sizeof(uint32_t));
}

uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle) {
  return command_word(handle, 0);
}

uint32_t cmd_req_action_is_set(cmd_req_t *handle) {
  return command_word(handle, 1) != 0 ? 1 : 0;
}

uint32_t cmd_req_action_is_del(cmd_req_t *handle) {
  return command_word(handle, 1) == 0 ? 1 : 0;
}

/* The identifier of the next attribute of a walk, or CMD_REQ_NO_MORE_ATTRIBUTES. */
static uint32_t next_attribute(cmd_req_t *walk, void **value, uint32_t *length) {
  uint16_t type, bytes;
  void *entry;
  uint32_t id = CMD_REQ_NO_MORE_ATTRIBUTES;
  for (; walk->entries > 0; --walk->entries) {
    if (tlv_aligned_array_get_next_tlv(walk->message->payload, &type, &bytes, &entry,
                                       TLV_ALIGNED_FLAG, &walk->cursor) != 0) {
      break;
    }
    if (type == entry_attribute && bytes == sizeof id) id = word_at(entry);
    if (type != entry_value) continue;
    --walk->entries;
    *value = entry;
    *length = bytes;
    return id;
  }
  return CMD_REQ_NO_MORE_ATTRIBUTES;
}

uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length) {
  return next_attribute(handle, value, length);
}

uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value,
                          uint32_t *length) {
  mts_msg_t *message = handle->message;
  cmd_req_t walk = {message, 0, tlv_aligned_array_get_num_tlvs(message->payload, TLV_ALIGNED_FLAG)};
  void *found;
  uint32_t found_length;
  for (uint32_t id;
       (id = next_attribute(&walk, &found, &found_length)) != CMD_REQ_NO_MORE_ATTRIBUTES;) {
    if (id != attribute_id) continue;
    *value = found;
    *length = found_length;
    return 0;
  }
  return 1;
}

/* Only the first answer counts. */
static int may_answer(mts_msg_t *message) {
  if (message->is_answered != 0) return 0;
  message->is_answered = 1;
  return 1;
}

void cmd_rsp_send_ok(cmd_req_t *handle) {
  may_answer(handle->message);
}

void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...) {
  (void)zero;
  mts_msg_t *message = handle->message;
  if (!may_answer(message)) return;
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(message->answer, sizeof message->answer, format, arguments);
  va_end(arguments);
}
