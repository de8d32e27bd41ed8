#include "ports.h"

#include <algorithm>

#include "state.h"

namespace standin {

std::vector<Port> ports;

namespace {

auto position_of(uint32_t if_index) {
  return std::lower_bound(ports.begin(), ports.end(), if_index,
                          [](const Port &port, uint32_t index) { return port.if_index < index; });
}

// The port that a test or the lab sets up; made when there is none.
Port &port_at(uint32_t if_index) {
  const auto at = position_of(if_index);
  if (at != ports.end() && at->if_index == if_index) return *at;
  return *ports.insert(at, Port{.if_index = if_index, .membership = {}});
}

void set_record(uint32_t if_index, bool has_record, Membership membership) {
  Port &port = port_at(if_index);
  port.has_record = has_record;
  port.membership = membership;
}

}  // namespace

Port *find_port(uint32_t if_index) {
  const auto at = position_of(if_index);
  return at != ports.end() && at->if_index == if_index ? &*at : nullptr;
}

void reset_ports() {
  ports.clear();
  reset_channels();
  reset_partition();
}

}  // namespace standin

void standin_add_ports(uint32_t first, uint32_t last, uint8_t type, uint32_t layer_mode) {
  for (uint64_t if_index = first; if_index <= last; ++if_index) {
    standin::Port &port = standin::port_at(static_cast<uint32_t>(if_index));
    port.type = type;
    port.layer_mode = layer_mode;
  }
}

void standin_set_member(uint32_t if_index, uint32_t mcec_id) {
  standin::set_record(if_index, mcec_id != 0, {1, mcec_id});
}

void standin_set_void_member(uint32_t if_index, uint32_t mcec_id) {
  standin::set_record(if_index, true, {0, mcec_id});
}

void standin_set_pod_port(uint32_t if_index, uint32_t is_pod) {
  standin::port_at(if_index).is_pod = is_pod != 0;
}
