/*
 * Interface indexes: the type of an interface, and the ports in a range.
 */
#ifndef DRAIMIOFAF_PLATFORM_IF_INDEX_H
#define DRAIMIOFAF_PLATFORM_IF_INDEX_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the type of an interface to *type, a byte that is 0 before the call. Spanning tree runs on
 * types 22, 26, 28, 29, 31 and 37. The result is ignored. */
uint32_t if_index_get_type(uint32_t if_index, uint8_t *type);

/* Writes the number of ports from first to last, both included, to *num_ports, which is 0 before
 * the call; 0 if first is greater than last. The result is ignored. */
uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports);

/* Writes the index of the port at a position of the range to *if_index, which is 0 before the call.
 * Positions start at 0 and are less than the number of ports. The result is ignored. */
uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t last, uint32_t *if_index,
                                        uint32_t position);

#ifdef __cplusplus
}
#endif

#endif
