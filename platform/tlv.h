/*
 * TLV arrays: parameters as (type, length, value) entries in one flat buffer.
 *
 * The library does not know the layout; it relies on this:
 *
 *   - a buffer for values of l1 ... lk bytes has 4 + footprint(l1) + ... + footprint(lk) bytes, and
 *     takes exactly these entries, added in any order;
 *   - a buffer of zero bytes is an empty array;
 *   - the array knows by itself how many entries it has and where they end: counting, walking and
 *     finding are given its address alone;
 *   - an array may start at any address, and a copy of its bytes elsewhere is the same array;
 *   - values are copied in unchanged, and handed out by their address in the array, at any
 *     alignment;
 *   - both peers use the same layout. An array may come from another machine, so the readers trust
 *     no length in it: an entry that does not lie within the array is an error, not a value.
 *
 * flag is TLV_ALIGNED_FLAG. Result codes are the platform's own, not 0 on failure; the library
 * prints them with syserr2str and hands them on. Choose codes that are none of the library's own
 * (types.h), so that a caller can distinguish them.
 */
#ifndef DRAIMIOFAF_PLATFORM_TLV_H
#define DRAIMIOFAF_PLATFORM_TLV_H

#include <stdint.h>

/* What the library passes as the flag of every operation on an array. */
enum { TLV_ALIGNED_FLAG = 1 };

#ifdef __cplusplus
extern "C" {
#endif

/* The bytes that an entry with a value of length bytes takes in an array, its header and what the
 * alignment adds included; the low 16 bits count. */
uint16_t tlv_aligned_data_size_get(uint32_t length);

/*
 * Append an entry to an array in a buffer of array_size bytes in all. value: length bytes at any
 * address, copied. 0: appended; else the array is as it was (for instance: no space left).
 */
uint32_t tlv_aligned_array_add_tlv(void *array, uint32_t array_size, uint16_t type, uint16_t length,
                                   const void *value, uint32_t flag);

/* How many entries the array has, one that cannot be read included. */
uint32_t tlv_aligned_array_get_num_tlvs(const void *array, uint32_t flag);

/*
 * Read the next entry. *cursor is 0 before the first and otherwise the platform's own; the library
 * asks as often as the array has entries, unless one fails. 0: *type, *length and *value are set,
 * *value into the array; else the walk ends.
 */
uint32_t tlv_aligned_array_get_next_tlv(const void *array, uint16_t *type, uint16_t *length,
                                        void **value, uint32_t flag, uint32_t *cursor);

/* Find an entry of a type. 0: *length and *value are set, *value into the array; else there is
 * none. Of two entries of one type either may be found. */
uint32_t tlv_aligned_array_find_tlv(const void *array, uint16_t type, uint16_t *length,
                                    void **value, uint32_t flag);

#ifdef __cplusplus
}
#endif

#endif
