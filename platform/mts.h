/*
 * Message transport: the messages that reach the process.
 */
#ifndef DRAIMIOFAF_PLATFORM_MTS_H
#define DRAIMIOFAF_PLATFORM_MTS_H

#include <stdint.h>

/* A message; the platform's own type behind a plain address. */
typedef void mts_msg_t;

#ifdef __cplusplus
extern "C" {
#endif

/* The opcode of a message. */
uint32_t mts_opc_get(const mts_msg_t *msg);

/* A printable name of an opcode, for a log line; never NULL. */
const char *mts_opc_name_get(uint32_t opcode);

/*
 * The payload of a message, at any alignment, valid as long as the message is; NULL: it has none.
 *
 * The library does not learn its size. Of an update message it reads a header of 16 bytes and asks
 * the TLV library about the array behind it, so a payload holds at least these, the array's own
 * header, and as many bytes as the header says the array has. msg is what the process passed to the
 * library.
 */
void *mts_payload_get(mts_msg_t *msg);

#ifdef __cplusplus
}
#endif

#endif
