/*
 * The stand-in: a small working platform for machines that have none. It keeps the contracts of
 * platform/ and is strict about them; this header has its set-up, failure injection and queries.
 * One platform per process, no locks.
 *
 * It is a shared library, since the library calls it before the objects of an executable are
 * constructed.
 *
 * Misuse (a block released twice or never given out, an unknown service, a node linked twice, a
 * request answered twice, a malformed history record) goes to the misuse handler, which by default
 * writes to standard error and aborts. A TLV that does not fit has an error code of its own.
 */
#ifndef DRAIMIOFAF_STANDIN_H
#define DRAIMIOFAF_STANDIN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define STANDIN_API __attribute__((visibility("default")))
#else
#define STANDIN_API
#endif

/* --- reset and misuse --- */

/* Back to an empty switch: no ports, no trunk, no injected failures, no history and no answers.
 * Live blocks, trees and registrations stay. */
STANDIN_API void standin_reset(void);

/* The handler of a misuse; NULL: the default, which aborts. A handler that returns lets the
 * operation be refused as far as it can. */
STANDIN_API void standin_on_misuse(void (*handler)(const char *what));

/* --- failure injection --- */

typedef enum standin_operation {
  STANDIN_ALLOC,        /* mtrack_alloc */
  STANDIN_TLV_ADD,      /* tlv_aligned_array_add_tlv */
  STANDIN_TLV_NEXT,     /* tlv_aligned_array_get_next_tlv */
  STANDIN_TLV_FIND,     /* tlv_aligned_array_find_tlv */
  STANDIN_HISTORY_INIT, /* sdwrap_hist_init_for_uuid */
  STANDIN_LAYER_MODE,   /* im_get_ifindex_layermode_list */
  STANDIN_MEMBERSHIP,   /* mcecm_sdb_info_get of an interface */
  STANDIN_OPERATIONS
} standin_operation_t;

/* What a TLV operation returns when a failure was injected. */
enum { STANDIN_TLV_INJECTED_FAILURE = 0x40AA00FF };

/* Let the nth call from now fail (1: the next), and `times` calls from there on. 0 times: none. */
STANDIN_API void standin_fail(standin_operation_t operation, uint32_t nth, uint32_t times);

/* Do not count the calls that follow, and let none of them fail (1), until they count again (0):
 * for calls that are not the library's. */
STANDIN_API void standin_suspend_failures(uint32_t suspended);

/* How often an operation was called since the reset. */
STANDIN_API uint32_t standin_calls(standin_operation_t operation);

/* --- memory --- */

#define STANDIN_ALL_TYPES UINT32_C(0xFFFFFFFF)

/* Live blocks, and their bytes, of a memory type or of all. */
STANDIN_API uint32_t standin_live_blocks(uint32_t mem_type);
STANDIN_API uint64_t standin_live_bytes(uint32_t mem_type);

/* The memory type and size of a live block; 0xFFFFFFFF for an address that is none. */
STANDIN_API uint32_t standin_block_type(const void *block);
STANDIN_API uint32_t standin_block_size(const void *block);

/* How many trees live. */
STANDIN_API uint32_t standin_trees(void);

/* Call `each` with every node of a tree, in its order. */
STANDIN_API void standin_tree_walk(const void *tree, void (*each)(const void *node, void *context),
                                   void *context);

/* The names that a service registered, NULL when there is none. */
STANDIN_API const char *standin_service_name(uint32_t service_id);
STANDIN_API const char *standin_mem_type_name(uint32_t service_id, uint32_t mem_type);

/* --- event history --- */

/* The records logged since the reset or the last clearing, in order; NULL past the last. */
STANDIN_API uint32_t standin_history_count(void);
STANDIN_API const char *standin_history_line(uint32_t position);
STANDIN_API void standin_history_clear(void);

/* Called with each line as it is logged; NULL: nothing is called. */
STANDIN_API void standin_on_history(void (*listener)(const char *line));

/* --- answers --- */

typedef struct standin_answer {
  uint32_t accepted; /* 1: accepted; 0: refused */
  const char *text;  /* the message of a refusal, else "" */
} standin_answer_t;

/* The answers given since the reset or the last clearing, in order. */
STANDIN_API uint32_t standin_answer_count(void);
STANDIN_API standin_answer_t standin_answer_at(uint32_t position);
STANDIN_API void standin_answers_clear(void);

/* --- messages --- */

typedef struct standin_attribute {
  uint32_t id;
  uint32_t length;
  const void *value;
} standin_attribute_t;

/* A message with a copy of the payload; payload NULL: a message without one. Release it with
 * standin_message_free. */
STANDIN_API void *standin_message(uint32_t opcode, const void *payload, size_t size);

/* A command request: form 1 positive, 0 negating. The values lie at odd addresses. */
STANDIN_API void *standin_command(uint32_t cmd_id, uint32_t form,
                                  const standin_attribute_t *attributes, uint32_t count);
STANDIN_API void standin_message_free(void *msg);

/* A handle for a command request that outlives the entry of the library, for its sub-extractors;
 * NULL when the message is none. Release it with standin_handle_free. */
STANDIN_API void *standin_handle(void *msg);
STANDIN_API void standin_handle_free(void *handle);

/* The size that cmd_req_handle_get_1 asks for; 0: what a handle needs. */
STANDIN_API void standin_handle_size(uint32_t size);

/* --- TLV arrays --- */

/* The bytes of an array, its header included; what follows them in its buffer is unused. */
STANDIN_API size_t standin_tlv_array_bytes(const void *array);

/* Leave entries without alignment, so that values lie at odd addresses too (1), or align them to 4
 * (0). For the arrays from now on; the default is 0, or 1 when the environment has
 * STANDIN_ODD_TLVS. */
STANDIN_API void standin_tlv_odd(uint32_t odd);

/* --- the switch --- */

/* Let ports first to last exist, of an interface type and a layer mode. */
STANDIN_API void standin_add_ports(uint32_t first, uint32_t last, uint8_t type,
                                   uint32_t layer_mode);

/* Make a port a member of a multi-chassis channel; 0: of none. */
STANDIN_API void standin_set_member(uint32_t if_index, uint32_t mcec_id);

/* Give a port a record whose first word is 0: it has one, but does not count. */
STANDIN_API void standin_set_void_member(uint32_t if_index, uint32_t mcec_id);

STANDIN_API void standin_set_pod_port(uint32_t if_index, uint32_t is_pod);
STANDIN_API void standin_set_internal(uint32_t mcec_id, uint32_t is_internal);
STANDIN_API void standin_set_trunk(uint32_t exists);
STANDIN_API void standin_set_partition(uint32_t slc);

/* Add the user VLANs first to last; without any after standin_clear_user_vlans. */
STANDIN_API void standin_add_user_vlans(uint32_t first, uint32_t last);
STANDIN_API void standin_clear_user_vlans(void);

#ifdef __cplusplus
}
#endif

#endif
