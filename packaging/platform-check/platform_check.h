/*
 * The integrator of a platform writes one C file for its check, with fixtures and two tables.
 *
 * The check calls each operation of <draimiofaf/platform/> as the library does, and writes a line
 * of TAP (Test Anything Protocol) for each contract. Each contract runs in its own child process,
 * with the service of the library registered and the switch set up: contracts do not affect one
 * another, and a crash or a hang fails only one contract.
 */
#ifndef DRAIMIOFAF_PLATFORM_CHECK_H
#define DRAIMIOFAF_PLATFORM_CHECK_H

#include <draimiofaf/platform/mts.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- tables --- */

/* A contract that the platform cannot keep, or that cannot be tested on it. It is reported as
 * skipped, with the reason. */
typedef struct platform_check_skip {
  const char *contract;
  const char *reason;
} platform_check_skip_t;

/* Ends with an empty row. */
extern const platform_check_skip_t platform_check_skips[];

/* The object name for a platform that is part of the program. */
#define PLATFORM_CHECK_PROGRAM "program"

/* The shared object that must define a group of names: two patterns of fnmatch(3), the second for
 * the object's file name without folders, for instance {"avl_*", "libtrees.so*"}. The first row
 * that matches a name is used. */
typedef struct platform_check_object {
  const char *names;
  const char *object;
} platform_check_object_t;

/* Ends with an empty row. */
extern const platform_check_object_t platform_check_objects[];

/* --- fixtures --- */

typedef struct platform_check_port {
  uint32_t if_index;
  uint8_t type;        /* if_index_get_type */
  uint8_t is_pod;      /* satmgr_if_is_pod_port */
  uint16_t has_record; /* in the database of the multi-chassis manager */
  uint32_t layer_mode; /* im_get_ifindex_layermode_list */
  uint32_t record[2];  /* the first two words of its record */
} platform_check_port_t;

typedef struct platform_check_switch {
  const platform_check_port_t *ports; /* ascending; no others between the first and the last */
  size_t port_count;
  uint32_t internal_channel; /* a multi-chassis channel that is internal, and one that is not */
  uint32_t other_channel;
  uint32_t first_user_vlan; /* to last_user_vlan; no others */
  uint32_t last_user_vlan;
  uint32_t has_trunk;
  uint32_t partition; /* sysmgr_slc_get */
} platform_check_switch_t;

/* Sets up a switch. Returns `wanted`, or, on a platform that cannot be configured, a description of
 * its switch: a contract that needs something that is missing there fails unless it is skipped. */
const platform_check_switch_t *platform_check_set_up(const platform_check_switch_t *wanted);

/* Returns a message with a copy of the payload, or without one if payload is NULL. */
mts_msg_t *platform_check_message(uint32_t opcode, const void *payload, uint32_t size);

typedef struct platform_check_attribute {
  uint32_t id;
  uint32_t length;
  const void *value;
} platform_check_attribute_t;

/* Returns a command request in its positive or negated form, with copies of the values. */
mts_msg_t *platform_check_command(uint32_t cmd_id, uint32_t is_positive,
                                  const platform_check_attribute_t *attributes, size_t count);

/* Returns the answer to a command: NULL if not yet answered, "" if accepted, else the text of the
 * refusal. */
const char *platform_check_answer(const mts_msg_t *msg);

/* Frees a message of either kind. */
void platform_check_release(mts_msg_t *msg);

/* Returns the latest line of the event history, or NULL if there is none. */
const char *platform_check_last_line(void);

#ifdef __cplusplus
}
#endif

#endif
