/*
 * Command requests: a configuration command on its way, readable through a handle, and its answer.
 *
 * An attribute's words are in host byte order. Its value may lie at any address inside the request
 * and is valid as long as the handle is; the library does not change it.
 */
#ifndef DRAIMIOFAF_PLATFORM_CMD_REQ_H
#define DRAIMIOFAF_PLATFORM_CMD_REQ_H

#include <stdint.h>

#include "mts.h"

/* A request handle, the platform's own. */
typedef struct cmd_req cmd_req_t;

/* What comes after the last attribute of a request, in the place of an identifier. */
#define CMD_REQ_NO_MORE_ATTRIBUTES UINT32_C(0xFFFFFFFF)

#ifdef __cplusplus
extern "C" {
#endif

/* The bytes that a handle for this message needs. Above 64 KiB the library does without. */
uint32_t cmd_req_handle_get_1(mts_msg_t *msg);

/* Build the handle of a message in a buffer of that many bytes, aligned to 16. NULL: the message
 * holds no usable request. The buffer goes away with the call of the library that provided it;
 * nothing is released. */
cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer);

/* The identifier of the command. The library asks once for each handle. */
uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle);

/* Find an attribute. 0: *value and *length (bytes) are set; else the request has none of it. */
uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value, uint32_t *length);

/* The next attribute: its identifier, with *value and *length set, or CMD_REQ_NO_MORE_ATTRIBUTES.
 * The handle keeps the position of this walk; the library does not reset it. */
uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length);

/* Not 0 when the command is in its positive form. */
uint32_t cmd_req_action_is_set(cmd_req_t *handle);

/* Not 0 when the command is in its negating ("no") form. */
uint32_t cmd_req_action_is_del(cmd_req_t *handle);

/* Answer the request: accepted. A request is answered once at the most; extract.h lists those that
 * are left to the process. */
void cmd_rsp_send_ok(cmd_req_t *handle);

/* Answer the request: refused, with a message for the user in the manner of printf. zero is 0. */
#if defined(__GNUC__)
__attribute__((format(printf, 3, 4)))
#endif
void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif
