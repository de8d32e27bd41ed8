// Finds out whether an interface runs spanning tree.

#include <algorithm>
#include <iterator>

#include "draimiofaf/stp.h"
#include "if_index.h"
#include "im.h"

constexpr uint8_t accepted_types[] = {22, 26, 28, 29, 31, 37};

extern "C" uint32_t stp_valid_if_index_offline(uint32_t if_index) {
  uint8_t type = 0;
  if_index_get_type(if_index, &type);
  return std::ranges::find(accepted_types, type) != std::end(accepted_types) ? 1 : 0;
}

extern "C" uint32_t stp_valid_if_index(uint32_t if_index) {
  if (stp_valid_if_index_offline(if_index) == 0) return 0;
  alignas(8) im_ifindex_layermode_t query{};
  query.if_index = if_index;
  if (im_get_ifindex_layermode_list(&query, 1) != 0) return 0;
  return query.layer_mode == STP_MCEC_IF_LAYER_MODE_ACCEPTED ? 1 : 0;
}
