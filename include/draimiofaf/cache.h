/*
 * Cache: the local switch's type-1 parameters, one tree in the process, and their export as the
 * TLV array that goes to the peer.
 *
 * Values are kept as in a TLV, in network byte order. A parameter of the switch has interface
 * index 0. An entry keeps the length it was created with. Neither lengths nor values are checked: a
 * mode that is neither MST nor Rapid-PVST makes every later check fail with STP_MCEC_ERR_FAILURE.
 * No pointer may be NULL unless its function allows it.
 */
#ifndef DRAIMIOFAF_CACHE_H
#define DRAIMIOFAF_CACHE_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- store ------------------------------------------------------------------------------------ */

struct avl_tree;

/* The tree, of the platform's AVL library: type1_cfg_avl_node_t in the order of the comparison
 * below. Created when the library is loaded, released with all its nodes when it is unloaded. */
STP_MCEC_API extern struct avl_tree *stp_mcec_type1_cfg_avl;

/* The tree's order, over two type1_cfg_avl_node_t: if_index, then type, both unsigned. 1 when a is
 * greater, -1 when it is smaller, 0 when both are equal. */
STP_MCEC_API int stp_mcec_type1_cfg_avl_cmp_func(const void *a, const void *b);

/* Release a node (type1_cfg_avl_node_t) that is in no tree, and its value when it has one. */
STP_MCEC_API void stp_mcec_type1_cfg_avl_free(void *node);

/* Remove one parameter from the cache and release it; nothing happens when it is not cached. */
STP_MCEC_API void stp_mcec_type1_cfg_delete_cache_node(uint16_t type, uint32_t if_index);

/* --- update and rebuild ----------------------------------------------------------------------- */

/*
 * Add the parameters of a message to the cache, or delete a scope from it. A parameter that is
 * cached already keeps its value: to replace a scope, delete it first.
 *
 * del: not 0: delete the scope (types 1 to 9 under index 0, or types 10 to 12 of the interface);
 *      msg is not used and may be NULL.
 * gbl: not 0: the scope is the switch, and entries go under index 0; 0: interface if_index. The
 *      types of the entries are not compared with the scope.
 * msg: a message whose payload is a header of STP_MCEC_TYPE1_UPD_HDR_SIZE bytes, not read, and a
 *      TLV array, whose values are in network byte order. It stays the caller's.
 *
 * 0: done, also when the message has no payload or no entry.
 * STP_MCEC_ERR_NO_MEMORY: an entry could not be allocated; those before it are cached.
 * A code of the TLV library: an entry could not be read; those before it are cached.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_cache_update(int32_t del, int32_t gbl, uint32_t if_index,
                                                      void *msg);

/*
 * Add the parameters of a TLV array to the cache, all under if_index (0 for an array of the
 * switch). A parameter that is cached already keeps its value: the cache is not emptied before, and
 * an array that was read once has no effect the second time. To replace a scope, delete it with
 * stp_mcec_type1_cfg_cache_update first. The array stays the caller's and is not written; the
 * second argument has no effect.
 *
 * 0: done, also when the array has no entry. STP_MCEC_ERR_INVALID_ARG: array is NULL.
 * STP_MCEC_ERR_NO_MEMORY and codes of the TLV library as above.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_cache_rebuild(void *array, uint32_t unused,
                                                       uint32_t if_index);

/* --- export ----------------------------------------------------------------------------------- */

/*
 * Build the TLV array of a scope: gbl not 0, the switch (if_index is not used); gbl 0, interface
 * if_index. It holds what is cached, in ascending order of type; nothing cached gives an empty
 * array.
 *
 * 0: *out is the array, memory type tlv_array_1_t, the caller's to release with mtrack_free. An
 *    entry that the TLV library refuses is logged and left out.
 * STP_MCEC_RESULT_NO_BLOCK: the array could not be allocated; *out is NULL.
 *
 *   void *array = NULL;
 *   if (stp_mcec_type1_cfg_get_params(1, 0, &array) == 0) {
 *     send_to_peer(array, stp_mcec_get_mcec_params_tlv_size(1, 0));
 *     mtrack_free(array);
 *   }
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_get_params(int32_t gbl, uint32_t if_index, void **out);

/* The bytes that the exported array of a scope takes. */
STP_MCEC_API uint32_t stp_mcec_get_mcec_params_tlv_size(int32_t gbl, uint32_t if_index);

/* Add to *size (bytes) what the parameter of a key (type1_cfg_avl_node_t) takes in an array;
 * nothing when it is not cached. */
STP_MCEC_API void stp_mcec_params_tlv_size_add(const void *key, uint32_t *size);

/* Append the parameter of a key to an array of array_size bytes in all; nothing when it is not
 * cached. A failure is logged. */
STP_MCEC_API void stp_mcec_params_tlv_add(const void *key, void *array, uint32_t array_size);

/* The bytes of the array that the MST region commands hand out. */
STP_MCEC_API uint32_t stp_mcec_get_mst_region_cfg_tlv_payld_size(void);

#ifdef __cplusplus
}
#endif

#endif
