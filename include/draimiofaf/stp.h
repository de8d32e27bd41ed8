/*
 * Helpers for the spanning-tree process: byte order of the VLAN-range state-change message, and the
 * interfaces that run spanning tree.
 */
#ifndef DRAIMIOFAF_STP_H
#define DRAIMIOFAF_STP_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Converts a VLAN-range state-change message from host byte order at src to network byte order at
 * dst. dst may be src. Does nothing if either is NULL. The message is packed:
 *
 *   0        4        8             12          13
 *   +--------+--------+-------------+-----------+---------------------------------------
 *   | first  | second | entry_count | list_flag | list_flag 0: entry_count 16-bit VLANs
 *   |        |        |             | (a byte)  | else: one 32-bit word
 *   +--------+--------+-------------+-----------+---------------------------------------
 *
 * The flag byte of dst is not written: a caller that converts to another buffer must set it. Both
 * buffers have room for the whole message, 13 + 2 * entry_count or 17 bytes, at any address.
 */
STP_MCEC_API void stp_hton_vlan_range_state_change_mts_msg(void *dst, const void *src);

/* The same, from network byte order at src to host byte order at dst. */
STP_MCEC_API void stp_ntoh_vlan_range_state_change_mts_msg(void *dst, const void *src);

/* Returns 1 if the type of the interface runs spanning tree (22, 26, 28, 29, 31 or 37 of the
 * platform's if_index_get_type), else 0. Does not query the interface manager, so it can be used
 * while the interface manager is not available. */
STP_MCEC_API uint32_t stp_valid_if_index_offline(uint32_t if_index);

/* Returns 1 if the interface has such a type and the interface manager reports the layer mode
 * STP_MCEC_IF_LAYER_MODE_ACCEPTED for it, else 0. If the interface manager does not answer, returns
 * 0. */
STP_MCEC_API uint32_t stp_valid_if_index(uint32_t if_index);

#ifdef __cplusplus
}
#endif

#endif
