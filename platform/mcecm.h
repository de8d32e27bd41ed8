/*
 * Multi-chassis manager: its database of port channels, and its set of user VLANs.
 *
 * The database is another component's and may change between two calls.
 */
#ifndef DRAIMIOFAF_PLATFORM_MCECM_H
#define DRAIMIOFAF_PLATFORM_MCECM_H

#include <stdint.h>

#include "draimiofaf/types.h"

/* The bytes of a database key, which the library aligns to 8. */
#define MCECM_SDB_KEY_SIZE 8

#ifdef __cplusplus
extern "C" {
#endif

/* Write the key of an interface's record; key: MCECM_SDB_KEY_SIZE bytes, opaque to the library. */
void mcecm_sdb_generate_if_key(uint32_t if_index, void *key);

/* Write the key of a multi-chassis trunk's record. The library asks for number 1. */
void mcecm_sdb_generate_mct_key(uint32_t number, void *key);

/*
 * The record of a key, at any alignment, NULL: none. It is read before the next call. Of an
 * interface's record the library reads two words in host byte order: the first is 0 when it counts
 * as missing, the second is the identifier of the multi-chassis port channel. Of the trunk's record
 * only the existence counts.
 */
void *mcecm_sdb_info_get(const void *key);

/* Not 0 when the multi-chassis channel is an internal one, as those of pods are. */
uint32_t mcecm_api_is_internal_mcec(uint32_t mcec_id);

/* The user VLANs that are configured on the switch; the library reads its bitmap bytes only. */
extern bmp4096_t mcec_stp_vlan_count;

#ifdef __cplusplus
}
#endif

#endif
