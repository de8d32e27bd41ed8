/*
 * A platform to copy from, independent of the stand-in. Each source implements the operations of
 * one or a few headers of draimiofaf/platform/.
 *
 *   memory.c     mtrack.h                          blocks of malloc
 *   history.c    sdwrap.h                          the last lines, in memory
 *   tree.c       avl.h                             the search trees of the C library
 *   tlv.c        tlv.h, syserr.h                   arrays in little-endian order
 *   requests.c   mts.h, cmd_req.h                  messages of the process itself
 *   switch.c     mcecm.h, if_index.h, im.h,        tables of the process
 *                satmgr.h, sysmgr.h
 *
 * This header declares what the process configures and queries. No locks and no constructors: the
 * library calls its platform before the constructors of an executable run.
 */
#ifndef EXAMPLE_PLATFORM_H
#define EXAMPLE_PLATFORM_H

#include <draimiofaf/platform/mts.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- the switch: tables of the process, which keeps ownership and must not move them --- */

typedef struct platform_port {
  uint32_t if_index;
  uint8_t type;
  uint8_t is_pod;      /* a host-interface port of a pod */
  uint16_t has_record; /* 0: the multi-chassis manager has no record of it */
  uint32_t layer_mode;
  uint32_t record[2]; /* its record there: 0 if treated as missing, and its channel */
} platform_port_t;

typedef struct platform_switch {
  const platform_port_t *ports; /* in ascending order of index */
  size_t port_count;
  const uint32_t *internal_channels;
  size_t internal_count;
  uint32_t has_trunk;
  uint32_t partition;
} platform_switch_t;

/* Sets the switch; NULL: one without ports and without a trunk. Its user VLANs are set in
 * mcec_stp_vlan_count (mcecm.h). */
void platform_set_switch(const platform_switch_t *tables);

/* --- messages --- */

typedef struct platform_attribute {
  uint32_t id;
  uint32_t length;
  const void *value;
} platform_attribute_t;

/* Return a message with a copy of the payload, without one if payload is NULL; and a command
 * request, in its positive or its negated form. NULL if memory is exhausted. */
mts_msg_t *platform_message(uint32_t opcode, const void *payload, uint32_t size);
mts_msg_t *platform_command(uint32_t cmd_id, uint32_t is_positive,
                            const platform_attribute_t *attributes, size_t count);

/* Returns the answer to a command: NULL if not yet answered, "" if accepted, else the text of the
 * refusal. */
const char *platform_answer(const mts_msg_t *msg);

void platform_message_free(mts_msg_t *msg);

/* --- arrays --- */

/* Returns the size of an array in bytes, including its header, or 0 if that is more than size, the
 * number of bytes received. Call this for every received array before anything reads it. */
size_t platform_array_bytes(const void *array, size_t size);

/* --- event history --- */

/* Return the number of logged lines, and the line at a position, or NULL if it was overwritten or
 * not yet logged. */
uint32_t platform_history_count(void);
const char *platform_history_line(uint32_t position);

#ifdef __cplusplus
}
#endif

#endif
