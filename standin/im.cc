#include "im.h"

#include <algorithm>
#include <span>

#include "ports.h"
#include "state.h"

uint32_t im_get_ifindex_layermode_list(void *entries, uint32_t count) {
  if (standin::fails(STANDIN_LAYER_MODE)) return 1;
  for (auto &entry : std::span(static_cast<im_ifindex_layermode_t *>(entries), count)) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&entry);
    if (reinterpret_cast<uintptr_t>(bytes) % 8 != 0 ||
        std::any_of(bytes + sizeof entry.if_index, bytes + sizeof entry,
                    [](uint8_t byte) { return byte != 0; })) {
      standin::misuse("a query at %p that is not empty", static_cast<const void *>(bytes));
    }
    const standin::Port *port = standin::find_port(entry.if_index);
    if (port == nullptr) return 1;
    entry.layer_mode = port->layer_mode;
  }
  return 0;
}
