/* Messages. A command request stores its attributes, followed by copies of their values, after its
 * header. */
#include <draimiofaf/platform/cmd_req.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform.h"

struct mts_msg {
  uint32_t opcode;
  void *payload; /* NULL: none */
  uint32_t is_request;
  uint32_t cmd_id;
  uint32_t is_positive;
  uint32_t is_answered;
  char answer[256];
  size_t count;
  platform_attribute_t attributes[];
};

struct cmd_req {
  mts_msg_t *message;
  size_t next; /* position in the attributes */
};

/* Returns a message with room for attributes, followed by bytes. */
static mts_msg_t *new_message(uint32_t opcode, size_t count, size_t bytes) {
  mts_msg_t *message = calloc(1, sizeof *message + count * sizeof message->attributes[0] + bytes);
  if (message == NULL) return NULL;
  message->opcode = opcode;
  message->count = count;
  return message;
}

mts_msg_t *platform_message(uint32_t opcode, const void *payload, uint32_t size) {
  mts_msg_t *message = new_message(opcode, 0, size);
  if (message == NULL || payload == NULL) return message;
  message->payload = memcpy(message->attributes, payload, size);
  return message;
}

mts_msg_t *platform_command(uint32_t cmd_id, uint32_t is_positive,
                            const platform_attribute_t *attributes, size_t count) {
  size_t bytes = 0;
  for (size_t i = 0; i < count; ++i) bytes += attributes[i].length;
  mts_msg_t *message = new_message(STP_MCEC_MTS_OPC_CMD_REQ, count, bytes);
  if (message == NULL) return NULL;
  message->is_request = 1;
  message->cmd_id = cmd_id;
  message->is_positive = is_positive;
  unsigned char *value = (unsigned char *)(message->attributes + count);
  for (size_t i = 0; i < count; ++i) {
    const platform_attribute_t *source = &attributes[i];
    message->attributes[i] = (platform_attribute_t){source->id, source->length, value};
    if (source->length > 0) memcpy(value, source->value, source->length);
    value += source->length;
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
  return msg->payload;
}

uint32_t cmd_req_handle_get_1(mts_msg_t *msg) {
  (void)msg;
  return sizeof(cmd_req_t);
}

cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer) {
  if (msg->is_request == 0) return NULL;
  cmd_req_t *handle = buffer;
  *handle = (cmd_req_t){msg, 0};
  return handle;
}

uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle) {
  return handle->message->cmd_id;
}

uint32_t cmd_req_action_is_set(cmd_req_t *handle) {
  return handle->message->is_positive != 0 ? 1 : 0;
}

uint32_t cmd_req_action_is_del(cmd_req_t *handle) {
  return handle->message->is_positive == 0 ? 1 : 0;
}

uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length) {
  if (handle->next == handle->message->count) return CMD_REQ_NO_MORE_ATTRIBUTES;
  const platform_attribute_t *attribute = &handle->message->attributes[handle->next++];
  *value = (void *)attribute->value;
  *length = attribute->length;
  return attribute->id;
}

uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value,
                          uint32_t *length) {
  cmd_req_t walk = {handle->message, 0};
  while (walk.next < walk.message->count) {
    if (cmd_req_attr_getnext(&walk, value, length) == attribute_id) return 0;
  }
  return 1;
}

/* Only the first answer is kept. */
void cmd_rsp_send_ok(cmd_req_t *handle) {
  handle->message->is_answered = 1;
}

void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...) {
  (void)zero;
  mts_msg_t *message = handle->message;
  if (message->is_answered != 0) return;
  message->is_answered = 1;
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(message->answer, sizeof message->answer, format, arguments);
  va_end(arguments);
}
