/*
 * TLV arrays: parameters as (type, length, value) entries in one flat buffer.
 *
 * The layout is defined by the platform. The library requires:
 *
 *   - a buffer for values of l1 ... lk bytes has 4 + footprint(l1) + ... + footprint(lk) bytes, and
 *     has room for exactly these entries, added in any order;
 *   - a buffer filled with zeros is an empty array;
 *   - the array contains the number and the end of its entries: the functions that count, read and
 *     find entries get only its address;
 *   - an array may start at any address, and a copy of its bytes elsewhere is the same array;
 *   - values are copied in unchanged, and returned as addresses inside the array, at any alignment;
 *   - both peers use the same layout. An array may come from another machine, so readers must check
 *     every length: an entry that is not entirely inside the array is an error.
 *
 * flag is TLV_ALIGNED_FLAG. Result codes are the platform's own, not 0 on failure; the library
 * prints them with syserr2str and returns them. They should differ from the codes of the library
 * (types.h), so that a caller can distinguish them.
 */
#ifndef DRAIMIOFAF_PLATFORM_TLV_H
#define DRAIMIOFAF_PLATFORM_TLV_H

#include <stdint.h>

/* The flag that the library passes to every operation on an array. */
enum { TLV_ALIGNED_FLAG = 1 };

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the bytes that an entry with a value of length bytes needs in an array, including header
 * and alignment. Only the low 16 bits are used. */
uint16_t tlv_aligned_data_size_get(uint32_t length);

/*
 * Appends an entry to an array; array_size is the total size of its buffer in bytes. value: length
 * bytes at any address, copied. Returns 0 on success; on failure, for instance if there is no
 * space left, the array is unchanged.
 */
uint32_t tlv_aligned_array_add_tlv(void *array, uint32_t array_size, uint16_t type, uint16_t length,
                                   const void *value, uint32_t flag);

/* Returns the number of entries in the array, including one that cannot be read. */
uint32_t tlv_aligned_array_get_num_tlvs(const void *array, uint32_t flag);

/*
 * Reads the next entry. *cursor is 0 before the first entry; other values are private to the
 * platform. The library makes one call for each entry of the array, and stops at the first failure.
 * Returns 0 and sets *type, *length and *value, an address inside the array; any other result is a
 * failure.
 */
uint32_t tlv_aligned_array_get_next_tlv(const void *array, uint16_t *type, uint16_t *length,
                                        void **value, uint32_t flag, uint32_t *cursor);

/* Finds an entry of a type. Returns 0 and sets *length and *value, an address inside the array; any
 * other result means that there is none. If several entries have the type, any of them may be
 * found. */
uint32_t tlv_aligned_array_find_tlv(const void *array, uint16_t type, uint16_t *length,
                                    void **value, uint32_t flag);

#ifdef __cplusplus
}
#endif

#endif
