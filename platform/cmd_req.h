/*
 * Command requests: a pending configuration command, which is read and answered through a handle.
 *
 * The words of an attribute are in host byte order. Its value may be at any address inside the
 * request and is valid as long as the handle; the library does not modify it.
 */
#ifndef DRAIMIOFAF_PLATFORM_CMD_REQ_H
#define DRAIMIOFAF_PLATFORM_CMD_REQ_H

#include <stdint.h>

#include "mts.h"

/* A request handle, defined by the platform. */
typedef struct cmd_req cmd_req_t;

/* Returned instead of an identifier after the last attribute of a request. */
#define CMD_REQ_NO_MORE_ATTRIBUTES UINT32_C(0xFFFFFFFF)

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the bytes that a handle for this message needs. Above 64 KiB the library rejects the
 * message. */
uint32_t cmd_req_handle_get_1(mts_msg_t *msg);

/* Builds the handle of a message in a buffer of that size, aligned to 16. Returns NULL if the
 * message has no usable request. The buffer is valid only during the library call that provides it;
 * the handle is not released. */
cmd_req_t *cmd_req_handle_get_2(mts_msg_t *msg, void *buffer);

/* Returns the identifier of the command. The library calls this once for each handle. */
uint32_t cmd_req_cmdId_getnext(cmd_req_t *handle);

/* Finds an attribute. Returns 0 and sets *value and *length (bytes), or returns another value if
 * the request does not have the attribute. */
uint32_t cmd_req_attr_get(cmd_req_t *handle, uint32_t attribute_id, void **value, uint32_t *length);

/* Returns the identifier of the next attribute and sets *value and *length, or returns
 * CMD_REQ_NO_MORE_ATTRIBUTES. The handle stores the position; the library does not reset it. */
uint32_t cmd_req_attr_getnext(cmd_req_t *handle, void **value, uint32_t *length);

/* Returns a value other than 0 if the command is in its positive form. */
uint32_t cmd_req_action_is_set(cmd_req_t *handle);

/* Returns a value other than 0 if the command is in its negated ("no") form. */
uint32_t cmd_req_action_is_del(cmd_req_t *handle);

/* Accepts the request. A request is answered at most once; extract.h lists those that the library
 * leaves to the process. */
void cmd_rsp_send_ok(cmd_req_t *handle);

/* Rejects the request, with a message for the user in printf format. zero is 0. */
#if defined(__GNUC__)
__attribute__((format(printf, 3, 4)))
#endif
void cmd_rsp_send_nok(cmd_req_t *handle, uint32_t zero, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif
