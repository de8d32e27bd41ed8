/*
 * The stand-in: a small working platform for machines that have none. It implements the contracts
 * of platform/ and checks that the library keeps them, too. This header declares configuration,
 * failure injection and queries. One platform per process, no locks.
 *
 * It is a shared library because the library calls it before the objects of an executable are
 * constructed.
 *
 * Misuse (a block that is freed twice or was never allocated, an unknown service, a node that is
 * inserted twice, a request that is answered twice, a malformed history record) is passed to the
 * misuse handler, which by default writes to standard error and aborts. A TLV that does not fit is
 * an error with its own code.
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

/* Resets to an empty switch: no ports, no trunk, no injected failures, no history and no answers.
 * Live blocks, trees and registrations do not change. */
STANDIN_API void standin_reset(void);

/* Sets the misuse handler; NULL: the default, which aborts. If the handler returns, the operation
 * fails, where it has a failure result. */
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

/* The result of a TLV operation for an injected failure. */
enum { STANDIN_TLV_INJECTED_FAILURE = 0x40AA00FF };

/* Makes `times` calls fail, starting with the nth call from now (1: the next). 0 times: none. */
STANDIN_API void standin_fail(standin_operation_t operation, uint32_t nth, uint32_t times);

/* 1: calls do not count and do not fail; 0: they do again. For calls that are not made by the
 * library. */
STANDIN_API void standin_suspend_failures(uint32_t suspended);

/* Returns the number of calls of an operation since the reset. */
STANDIN_API uint32_t standin_calls(standin_operation_t operation);

/* --- memory --- */

#define STANDIN_ALL_TYPES UINT32_C(0xFFFFFFFF)

/* Return the number of live blocks of a memory type or of all types, and their bytes. */
STANDIN_API uint32_t standin_live_blocks(uint32_t mem_type);
STANDIN_API uint64_t standin_live_bytes(uint32_t mem_type);

/* Return the memory type and the size of a live block, or 0xFFFFFFFF for any other address. */
STANDIN_API uint32_t standin_block_type(const void *block);
STANDIN_API uint32_t standin_block_size(const void *block);

/* Returns the number of live trees. */
STANDIN_API uint32_t standin_trees(void);

/* Calls `each` for every node of a tree, in order. */
STANDIN_API void standin_tree_walk(const void *tree, void (*each)(const void *node, void *context),
                                   void *context);

/* Return the names that a service registered, or NULL if there are none. */
STANDIN_API const char *standin_service_name(uint32_t service_id);
STANDIN_API const char *standin_mem_type_name(uint32_t service_id, uint32_t mem_type);

/* --- event history --- */

/* The records logged since the reset or the last clearing, in order; NULL after the last. */
STANDIN_API uint32_t standin_history_count(void);
STANDIN_API const char *standin_history_line(uint32_t position);
STANDIN_API void standin_history_clear(void);

/* Sets a function that is called for each logged line; NULL: none. */
STANDIN_API void standin_on_history(void (*listener)(const char *line));

/* --- answers --- */

typedef struct standin_answer {
  uint32_t accepted; /* 1: accepted; 0: refused */
  const char *text;  /* the message of a refusal, else "" */
} standin_answer_t;

/* The answers since the reset or the last clearing, in order. */
STANDIN_API uint32_t standin_answer_count(void);
STANDIN_API standin_answer_t standin_answer_at(uint32_t position);
STANDIN_API void standin_answers_clear(void);

/* --- messages --- */

typedef struct standin_attribute {
  uint32_t id;
  uint32_t length;
  const void *value;
} standin_attribute_t;

/* Returns a message with a copy of the payload, or without one if payload is NULL. Free it with
 * standin_message_free. */
STANDIN_API void *standin_message(uint32_t opcode, const void *payload, size_t size);

/* Returns a command request: form 1 positive, 0 negated. The values are at odd addresses. */
STANDIN_API void *standin_command(uint32_t cmd_id, uint32_t form,
                                  const standin_attribute_t *attributes, uint32_t count);
STANDIN_API void standin_message_free(void *msg);

/* Returns a handle that stays valid outside of the library, for calls of its sub-extractors, or
 * NULL if the message is not a command request. Free it with standin_handle_free. */
STANDIN_API void *standin_handle(void *msg);
STANDIN_API void standin_handle_free(void *handle);

/* Sets the size that cmd_req_handle_get_1 returns; 0: the size of a handle. */
STANDIN_API void standin_handle_size(uint32_t size);

/* --- TLV arrays --- */

/* Returns the size of an array in bytes, including its header; the rest of its buffer is unused. */
STANDIN_API size_t standin_tlv_array_bytes(const void *array);

/* 1: new entries are not aligned, so that values are at odd addresses, too; 0: they are aligned to
 * 4. The default is 0, or 1 if the environment has STANDIN_ODD_TLVS. */
STANDIN_API void standin_tlv_odd(uint32_t odd);

/* --- the switch --- */

/* Adds ports first to last with an interface type and a layer mode. */
STANDIN_API void standin_add_ports(uint32_t first, uint32_t last, uint8_t type,
                                   uint32_t layer_mode);

/* Makes a port a member of a multi-chassis channel; 0: of none. */
STANDIN_API void standin_set_member(uint32_t if_index, uint32_t mcec_id);

/* Sets a record whose first word is 0: it exists, but the library treats it as missing. */
STANDIN_API void standin_set_void_member(uint32_t if_index, uint32_t mcec_id);

STANDIN_API void standin_set_pod_port(uint32_t if_index, uint32_t is_pod);
STANDIN_API void standin_set_internal(uint32_t mcec_id, uint32_t is_internal);
STANDIN_API void standin_set_trunk(uint32_t exists);
STANDIN_API void standin_set_partition(uint32_t slc);

/* Adds the user VLANs first to last. */
STANDIN_API void standin_add_user_vlans(uint32_t first, uint32_t last);
STANDIN_API void standin_clear_user_vlans(void);

#ifdef __cplusplus
}
#endif

#endif
