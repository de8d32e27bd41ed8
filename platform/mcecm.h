/*
 * Multi-chassis manager: its database of port channels, and its set of user VLANs.
 *
 * Another component owns the database; it may change between two calls.
 */
#ifndef DRAIMIOFAF_PLATFORM_MCECM_H
#define DRAIMIOFAF_PLATFORM_MCECM_H

#include <stdint.h>

#include "draimiofaf/types.h"

/* The size of a database key in bytes. The library aligns keys to 8. */
#define MCECM_SDB_KEY_SIZE 8

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the key of an interface's record; key: MCECM_SDB_KEY_SIZE bytes, opaque to the library. */
void mcecm_sdb_generate_if_key(uint32_t if_index, void *key);

/* Writes the key of a multi-chassis trunk's record. The library passes the number 1. */
void mcecm_sdb_generate_mct_key(uint32_t number, void *key);

/*
 * Returns the record of a key, at any alignment, or NULL if there is none. The library reads the
 * record before the next call. Of an interface's record it reads two words in host byte order: if
 * the first is 0, the record is treated as missing; the second is the identifier of the
 * multi-chassis port channel. For the trunk only the existence of the record matters.
 */
void *mcecm_sdb_info_get(const void *key);

/* Returns a value other than 0 if the multi-chassis channel is internal, as those of pods are. */
uint32_t mcecm_api_is_internal_mcec(uint32_t mcec_id);

/* The user VLANs configured on the switch. The library reads only the bitmap bytes. */
extern bmp4096_t mcec_stp_vlan_count;

#ifdef __cplusplus
}
#endif

#endif
