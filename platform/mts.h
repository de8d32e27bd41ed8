/*
 * Message transport: the messages that reach the process.
 */
#ifndef DRAIMIOFAF_PLATFORM_MTS_H
#define DRAIMIOFAF_PLATFORM_MTS_H

#include <stdint.h>

/* A message, the platform's own. */
typedef struct mts_msg mts_msg_t;

/* Opcodes of the messages that the library takes: a command request, and an update of spanning
 * tree's type-1 parameters. */
enum {
  STP_MCEC_MTS_OPC_CMD_REQ = 7682,
  STP_MCEC_MTS_OPC_TYPE1_UPD = 0x1A00B,
};

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
 * header, and as many bytes as the header gives the array. msg is what the process passed to the
 * library.
 */
void *mts_payload_get(mts_msg_t *msg);

#ifdef __cplusplus
}
#endif

#endif
