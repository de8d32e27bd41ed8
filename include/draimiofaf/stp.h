/*
 * Helpers of the spanning-tree process: byte order of the VLAN-range state-change message, and
 * which interfaces spanning tree runs on.
 */
#ifndef DRAIMIOFAF_STP_H
#define DRAIMIOFAF_STP_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The message, packed; words are in network byte order on the wire, in host byte order in memory:
 *
 *   0        4        8             12          13
 *   +--------+--------+-------------+-----------+---------------------------------------
 *   | first  | second | entry_count | list_flag | list_flag 0: entry_count 16-bit VLANs
 *   |        |        |             | (a byte)  | else: one 32-bit word
 *   +--------+--------+-------------+-----------+---------------------------------------
 *
 * From host order at src to network order at dst. dst may be src; nothing happens when either is
 * NULL. The flag byte of dst is not written: a caller that converts into another buffer sets it.
 * Both buffers have room for the whole message, 13 + 2 * entry_count or 17 bytes, at any address.
 */
STP_MCEC_API void stp_hton_vlan_range_state_change_mts_msg(void *dst, const void *src);

/* The same from network order at src to host order at dst. */
STP_MCEC_API void stp_ntoh_vlan_range_state_change_mts_msg(void *dst, const void *src);

/* 1 when the interface is of a type that spanning tree runs on (22, 26, 28, 29, 31 or 37 of the
 * platform's if_index_get_type), else 0. Asks the interface index alone, so that it can be used
 * while the interface manager is away. */
STP_MCEC_API uint32_t stp_valid_if_index_offline(uint32_t if_index);

/* 1 when the interface is of such a type and the interface manager reports the layer mode
 * STP_MCEC_IF_LAYER_MODE_ACCEPTED for it; else 0, also when the interface manager does not
 * answer. */
STP_MCEC_API uint32_t stp_valid_if_index(uint32_t if_index);

#ifdef __cplusplus
}
#endif

#endif
