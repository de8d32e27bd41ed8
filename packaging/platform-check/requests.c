/* Messages and command requests: mts.h, cmd_req.h. */
#include <draimiofaf/platform/cmd_req.h>
#include <draimiofaf/platform/mts.h>
#include <draimiofaf/types.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "check.h"

enum { max_handle_size = 64 * 1024, handle_alignment = 16, payload_size = 1000 };

static uint8_t payload[payload_size];

static mts_msg_t *new_message(uint32_t opcode, const void *content, uint32_t size) {
  mts_msg_t *msg = platform_check_message(opcode, content, size);
  REQUIRE(msg != NULL, "platform_check_message returned NULL");
  return msg;
}

static mts_msg_t *new_update(void) {
  fill_pattern(payload, sizeof payload, 1);
  return new_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload, sizeof payload);
}

/* --- mts.h --- */

static void verify_opcodes(void) {
  static const uint32_t opcodes[] = {STP_MCEC_MTS_OPC_TYPE1_UPD, 1, 0xFFFF};
  for (size_t i = 0; i < sizeof opcodes / sizeof opcodes[0]; ++i) {
    mts_msg_t *msg = new_message(opcodes[i], NULL, 0);
    REQUIRE(mts_opc_get(msg) == opcodes[i], "opcode is 0x%X; expected 0x%X", mts_opc_get(msg),
            opcodes[i]);
    platform_check_release(msg);
  }
  mts_msg_t *msg = platform_check_command(STP_MCEC_CMD_STP_MODE, 1, NULL, 0);
  REQUIRE(msg != NULL, "platform_check_command returned NULL");
  REQUIRE(mts_opc_get(msg) == STP_MCEC_MTS_OPC_CMD_REQ, "the opcode of a command is 0x%X",
          mts_opc_get(msg));
}

static void verify_opcode_names(void) {
  static const uint32_t opcodes[] = {STP_MCEC_MTS_OPC_CMD_REQ, STP_MCEC_MTS_OPC_TYPE1_UPD, 0,
                                     UINT32_MAX};
  for (size_t i = 0; i < sizeof opcodes / sizeof opcodes[0]; ++i) {
    REQUIRE(mts_opc_name_get(opcodes[i]) != NULL, "mts_opc_name_get returned NULL for 0x%X",
            opcodes[i]);
  }
}

static void verify_payloads(void) {
  mts_msg_t *first = new_update();
  mts_msg_t *none = new_message(STP_MCEC_MTS_OPC_TYPE1_UPD, NULL, 0);
  const void *found = mts_payload_get(first);
  REQUIRE(found != NULL && has_pattern(found, payload_size, 1), "the payload differs");
  REQUIRE(mts_payload_get(none) == NULL, "a message without payload has one");
  REQUIRE(mts_payload_get(first) == found && has_pattern(found, payload_size, 1),
          "the payload has moved or changed");
  platform_check_release(none);
  platform_check_release(first);
}

/* --- cmd_req.h --- */

enum { value_count = 4 };

static const struct {
  uint32_t id, length;
} attributes[value_count] = {{1, 4}, {9, 0}, {1000, 600}, {2, 7}};

static mts_msg_t *new_command(uint32_t is_positive) {
  static uint8_t values[value_count][600];
  platform_check_attribute_t given[value_count];
  for (size_t i = 0; i < value_count; ++i) {
    fill_pattern(values[i], attributes[i].length, attributes[i].id);
    given[i] = (platform_check_attribute_t){attributes[i].id, attributes[i].length, values[i]};
  }
  mts_msg_t *msg =
      platform_check_command(STP_MCEC_CMD_GBL_LOOPGUARD, is_positive, given, value_count);
  REQUIRE(msg != NULL, "platform_check_command returned NULL");
  return msg;
}

/* Returns a buffer for the handle of a message, aligned like the library's, before a pattern. */
static void *handle_buffer(mts_msg_t *msg, size_t *size) {
  *size = cmd_req_handle_get_1(msg);
  REQUIRE(*size <= max_handle_size, "a handle needs %zu bytes", *size);
  uint8_t *buffer = guarded_buffer(*size + 2 * handle_alignment);
  buffer += handle_alignment - (uintptr_t)buffer % handle_alignment;
  fill_pattern(buffer + *size, 1, 1);
  return buffer;
}

static cmd_req_t *new_handle(mts_msg_t *msg) {
  size_t size = 0;
  cmd_req_t *handle = cmd_req_handle_get_2(msg, handle_buffer(msg, &size));
  REQUIRE(handle != NULL, "a command has no handle");
  return handle;
}

static void verify_handles(void) {
  mts_msg_t *msg = new_command(1);
  size_t size = 0;
  uint8_t *buffer = handle_buffer(msg, &size);
  REQUIRE(cmd_req_handle_get_2(msg, buffer) != NULL, "a command has no handle");
  REQUIRE(has_pattern(buffer + size, 1, 1), "a handle writes more than its %zu bytes", size);
}

static void verify_no_request(void) {
  static const char *const names[] = {"an update message", "a command without payload",
                                      "a command with a payload of one byte"};
  mts_msg_t *msgs[] = {new_update(), new_message(STP_MCEC_MTS_OPC_CMD_REQ, NULL, 0),
                       new_message(STP_MCEC_MTS_OPC_CMD_REQ, "x", 1)};
  for (size_t i = 0; i < sizeof msgs / sizeof msgs[0]; ++i) {
    size_t size = 0;
    REQUIRE(cmd_req_handle_get_2(msgs[i], handle_buffer(msgs[i], &size)) == NULL, "%s has a handle",
            names[i]);
  }
}

static void verify_commands(void) {
  for (uint32_t is_positive = 0; is_positive < 2; ++is_positive) {
    cmd_req_t *handle = new_handle(new_command(is_positive));
    const uint32_t id = cmd_req_cmdId_getnext(handle);
    REQUIRE(id == STP_MCEC_CMD_GBL_LOOPGUARD, "the command identifier is %u", id);
    REQUIRE((cmd_req_action_is_set(handle) != 0) == (is_positive != 0) &&
                (cmd_req_action_is_del(handle) != 0) == (is_positive == 0),
            "the form of the command is wrong");
  }
}

static void verify_search(void) {
  cmd_req_t *handle = new_handle(new_command(1));
  uint32_t length = 0;
  void *value = NULL;
  for (size_t i = value_count; i-- > 0;) {
    REQUIRE(cmd_req_attr_get(handle, attributes[i].id, &value, &length) == 0,
            "attribute %u is not found", attributes[i].id);
    REQUIRE(length == attributes[i].length, "attribute %u has %u bytes; expected %u",
            attributes[i].id, length, attributes[i].length);
    REQUIRE(has_pattern(value, length, attributes[i].id), "attribute %u has a wrong value",
            attributes[i].id);
  }
  REQUIRE(cmd_req_attr_get(handle, 77, &value, &length) != 0, "a missing attribute is found");
}

static void verify_walk(void) {
  mts_msg_t *msg = new_command(1);
  cmd_req_t *handle = new_handle(msg);
  cmd_req_t *other = new_handle(msg);
  const void *values[value_count];
  uint32_t length = 0;
  void *value = NULL;
  for (size_t i = 0; i < value_count; ++i) {
    const uint32_t id = cmd_req_attr_getnext(handle, &value, &length);
    REQUIRE(id == attributes[i].id && length == attributes[i].length,
            "found attribute %u of %u bytes; expected %u", id, length, attributes[i].id);
    values[i] = value;
    /* Neither a search nor another handle changes the position. */
    cmd_req_attr_get(handle, attributes[0].id, &value, &length);
    if (i == 0) cmd_req_attr_getnext(other, &value, &length);
  }
  for (int i = 0; i < 2; ++i) {
    REQUIRE(cmd_req_attr_getnext(handle, &value, &length) == CMD_REQ_NO_MORE_ATTRIBUTES,
            "the walk does not end");
  }
  for (size_t i = 0; i < value_count; ++i) {
    REQUIRE(has_pattern(values[i], attributes[i].length, attributes[i].id),
            "attribute %u has a wrong value", attributes[i].id);
  }
}

static void expect_answer(const mts_msg_t *msg, const char *expected) {
  const char *answer = platform_check_answer(msg);
  REQUIRE(answer != NULL, "there is no answer");
  REQUIRE(strcmp(answer, expected) == 0, "the answer is '%s'; expected '%s'", answer, expected);
}

static void verify_answers(void) {
  mts_msg_t *accepted = new_command(1);
  mts_msg_t *refused = new_command(0);
  cmd_req_t *handle = new_handle(accepted);
  REQUIRE(platform_check_answer(accepted) == NULL, "a new request has an answer");
  cmd_rsp_send_ok(handle);
  expect_answer(accepted, "");
  cmd_rsp_send_nok(new_handle(refused), 0, "%s %u, %d%%", "refused", 507U, -1);
  expect_answer(refused, "refused 507, -1%");
}

const contract_t request_contracts[] = {
    {"mts.opcode", "a message has its opcode", verify_opcodes},
    {"mts.opcode-name", "every opcode has a name", verify_opcode_names},
    {"mts.payload", "a message has its payload, or none", verify_payloads},
    {"cmd_req.handle", "a handle fits in the stated size, at most 64 KiB", verify_handles},
    {"cmd_req.no-request", "a message that is not a request has no handle", verify_no_request},
    {"cmd_req.command", "a request has its command and its form", verify_commands},
    {"cmd_req.search", "attributes are found, with length and value", verify_search},
    {"cmd_req.walk", "attributes are read in order, once each", verify_walk},
    {"cmd_req.answer", "a request is accepted, or refused with a formatted text", verify_answers},
    {NULL, NULL, NULL},
};
