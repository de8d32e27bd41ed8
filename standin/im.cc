#include "im.h"

#include <span>

#include "ports.h"
#include "state.h"

uint32_t im_get_ifindex_layermode_list(void *entries, uint32_t count) {
  if (standin::fails(STANDIN_LAYER_MODE)) return 1;
  for (auto &entry : std::span(static_cast<im_ifindex_layermode_t *>(entries), count)) {
    const standin::Port *port = standin::find_port(entry.if_index);
    if (port == nullptr) return 1;
    entry.layer_mode = port->layer_mode;
  }
  return 0;
}
