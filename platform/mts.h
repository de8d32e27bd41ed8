/*
 * Message transport: the messages that the process receives.
 */
#ifndef DRAIMIOFAF_PLATFORM_MTS_H
#define DRAIMIOFAF_PLATFORM_MTS_H

#include <stdint.h>

/* A message, defined by the platform. */
typedef struct mts_msg mts_msg_t;

/* Opcodes of the messages that the library accepts: a command request, and an update of the type-1
 * parameters of spanning tree. */
enum {
  STP_MCEC_MTS_OPC_CMD_REQ = 7682,
  STP_MCEC_MTS_OPC_TYPE1_UPD = 0x1A00B,
};

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the opcode of a message. */
uint32_t mts_opc_get(const mts_msg_t *msg);

/* Returns a printable name of an opcode, for a log line; never NULL. */
const char *mts_opc_name_get(uint32_t opcode);

/*
 * Returns the payload of a message, at any alignment, valid as long as the message; NULL if there
 * is none.
 *
 * The library does not know the size of the payload. It reads the 16-byte header of an update
 * message and passes the array behind it to the TLV library. So a payload must contain at least
 * this header, the header of the array, and as many bytes as the first header states for the array.
 * msg is the pointer that the process passed to the library.
 */
void *mts_payload_get(mts_msg_t *msg);

#ifdef __cplusplus
}
#endif

#endif
