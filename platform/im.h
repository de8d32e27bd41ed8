/*
 * Interface manager: the layer mode of interfaces.
 */
#ifndef DRAIMIOFAF_PLATFORM_IM_H
#define DRAIMIOFAF_PLATFORM_IM_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

/*
 * A query and its answer:
 *
 *   0          4                20           24                536
 *   +----------+----------------+------------+-----------------+
 *   | if_index | platform data  | layer_mode | platform data   |
 *   +----------+----------------+------------+-----------------+
 *
 * Words are in host byte order. The library aligns an entry to 8, sets if_index and leaves the rest
 * 0.
 */
typedef struct im_ifindex_layermode {
  uint32_t if_index;
  uint8_t platform_1[16];
  uint32_t layer_mode;
  uint8_t platform_2[512];
} im_ifindex_layermode_t;

static_assert(sizeof(im_ifindex_layermode_t) == 536, "im_ifindex_layermode_t");
static_assert(offsetof(im_ifindex_layermode_t, layer_mode) == 20, "im_ifindex_layermode_t");

#ifdef __cplusplus
extern "C" {
#endif

/* Sets the layer mode of each of count entries (im_ifindex_layermode_t). Returns 0 on success; on
 * any other result the entries are not read. */
uint32_t im_get_ifindex_layermode_list(void *entries, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
