/*
 * Interface indexes: what kind of interface an index names, and which ports lie in a range.
 */
#ifndef DRAIMIOFAF_PLATFORM_IF_INDEX_H
#define DRAIMIOFAF_PLATFORM_IF_INDEX_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Write the type of an interface to *type, a byte that is 0 before the call. Spanning tree runs on
 * types 22, 26, 28, 29, 31 and 37. The result is not looked at. */
uint32_t if_index_get_type(uint32_t if_index, uint8_t *type);

/* Write the number of ports from first to last, both included, to *num_ports, which is 0 before the
 * call; 0 for a range that is reversed. The result is not looked at. */
uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports);

/* Write the index of the port at a position of the range, counted from 0 and below the number of
 * ports, to *if_index, which is 0 before the call. The result is not looked at. */
uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t last, uint32_t *if_index,
                                        uint32_t position);

#ifdef __cplusplus
}
#endif

#endif
