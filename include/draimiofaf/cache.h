/*
 * Cache: the local switch's type-1 parameters, in one tree per process, and their export as the
 * TLV array that is sent to the peer.
 *
 * Values are stored as in a TLV, in network byte order. A parameter of the switch has interface
 * index 0. The length of an entry never changes. Lengths and values are not checked: a mode other
 * than MST and Rapid-PVST makes every later check fail with STP_MCEC_ERR_FAILURE. No pointer may be
 * NULL unless its function allows it.
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
 * function below. Created when the library is loaded; freed with all nodes when it is unloaded. */
STP_MCEC_API extern struct avl_tree *stp_mcec_type1_cfg_avl;

/* Compares two type1_cfg_avl_node_t by if_index, then by type, both unsigned. Returns 1 if a is
 * greater, -1 if a is smaller, 0 if both are equal. */
STP_MCEC_API int stp_mcec_type1_cfg_avl_cmp_func(const void *a, const void *b);

/* Frees a node (type1_cfg_avl_node_t) that is in no tree, and its value, if any. */
STP_MCEC_API void stp_mcec_type1_cfg_avl_free(void *node);

/* Removes one parameter from the cache and frees it. Does nothing if it is not cached. */
STP_MCEC_API void stp_mcec_type1_cfg_delete_cache_node(uint16_t type, uint32_t if_index);

/* --- update and rebuild ----------------------------------------------------------------------- */

/*
 * Adds the parameters of a message to the cache, or deletes a scope from it. A parameter that is
 * already cached keeps its value: to replace a scope, delete it first.
 *
 * del: if not 0, delete the scope (types 1 to 9 under index 0, or types 10 to 12 of the interface);
 *      msg is not used and may be NULL.
 * gbl: if not 0, the scope is the switch, and entries are stored under index 0; if 0, it is
 *      interface if_index. The types of the entries are not checked against the scope.
 * msg: a message whose payload is a header of STP_MCEC_TYPE1_UPD_HDR_SIZE bytes, which is not read,
 *      and a TLV array with values in network byte order. The caller keeps ownership.
 *
 * Returns 0 on success, also if the message has no payload or no entries.
 * STP_MCEC_ERR_NO_MEMORY: an entry could not be allocated; the entries before it are cached.
 * A code of the TLV library: an entry could not be read; the entries before it are cached.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_cache_update(int32_t del, int32_t gbl, uint32_t if_index,
                                                      void *msg);

/*
 * Adds the parameters of a TLV array to the cache, all under if_index (0 for an array of the
 * switch). The cache is not cleared first, and a parameter that is already cached keeps its value:
 * adding the same array twice changes nothing. To replace a scope, delete it first with
 * stp_mcec_type1_cfg_cache_update. The array is not modified, and the caller keeps ownership. The
 * second argument is ignored.
 *
 * Returns 0 on success, also if the array has no entries. STP_MCEC_ERR_INVALID_ARG: array is NULL.
 * STP_MCEC_ERR_NO_MEMORY and codes of the TLV library as above.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_cache_rebuild(void *array, uint32_t unused,
                                                       uint32_t if_index);

/* --- export ----------------------------------------------------------------------------------- */

/*
 * Builds the TLV array of a scope: the switch if gbl is not 0 (if_index is ignored), else interface
 * if_index. The array contains the cached parameters in ascending order of type; it is empty if
 * none is cached.
 *
 * Returns 0 on success: *out is the array, memory type tlv_array_1_t. The caller frees it with
 *    mtrack_free. An entry that the TLV library rejects is logged and omitted.
 * STP_MCEC_RESULT_NO_BLOCK: the array could not be allocated; *out is NULL.
 *
 *   void *array = NULL;
 *   if (stp_mcec_type1_cfg_get_params(1, 0, &array) == 0) {
 *     send_to_peer(array, stp_mcec_get_mcec_params_tlv_size(1, 0));
 *     mtrack_free(array);
 *   }
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_get_params(int32_t gbl, uint32_t if_index, void **out);

/* Returns the size of the exported array of a scope, in bytes. */
STP_MCEC_API uint32_t stp_mcec_get_mcec_params_tlv_size(int32_t gbl, uint32_t if_index);

/* Adds to *size the bytes that the parameter of a key (type1_cfg_avl_node_t) needs in an array.
 * Does nothing if the parameter is not cached. */
STP_MCEC_API void stp_mcec_params_tlv_size_add(const void *key, uint32_t *size);

/* Appends the parameter of a key to an array; array_size is the total size of its buffer in bytes.
 * Does nothing if the parameter is not cached. A failure is logged. */
STP_MCEC_API void stp_mcec_params_tlv_add(const void *key, void *array, uint32_t array_size);

/* Returns the size in bytes of the array that the MST region reset returns. */
STP_MCEC_API uint32_t stp_mcec_get_mst_region_cfg_tlv_payld_size(void);

#ifdef __cplusplus
}
#endif

#endif
