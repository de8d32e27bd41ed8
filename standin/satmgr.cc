#include "satmgr.h"

#include "ports.h"

uint32_t satmgr_if_is_pod_port(uint32_t if_index) {
  const standin::Port *port = standin::find_port(if_index);
  return port != nullptr && port->is_pod ? 1 : 0;
}
