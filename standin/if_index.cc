#include "if_index.h"

#include <algorithm>

#include "ports.h"
#include "state.h"

namespace {

// The ports of a range as positions in the order of all; none when the range is reversed.
struct Positions {
  std::size_t first;
  std::size_t count;
};

Positions positions(uint32_t first, uint32_t last) {
  const auto &ports = standin::ports;
  const auto before = [](const standin::Port &port, uint32_t index) {
    return port.if_index < index;
  };
  const auto after = [](uint32_t index, const standin::Port &port) {
    return index < port.if_index;
  };
  const auto start = std::lower_bound(ports.begin(), ports.end(), first, before);
  if (first > last) return {0, 0};
  const auto end = std::upper_bound(start, ports.end(), last, after);
  return {static_cast<std::size_t>(start - ports.begin()), static_cast<std::size_t>(end - start)};
}

// What the library leaves for an answer is 0 before the call.
template <class Number>
void expect_zero(const Number *answer) {
  if (*answer != 0) standin::misuse("%u is where an answer goes, instead of 0", unsigned{*answer});
}

}  // namespace

uint32_t if_index_get_type(uint32_t if_index, uint8_t *type) {
  expect_zero(type);
  const standin::Port *port = standin::find_port(if_index);
  if (port == nullptr) return 1;
  *type = port->type;
  return 0;
}

uint32_t if_index_get_num_ports_in_if_index_range(uint32_t first, uint32_t last,
                                                  uint32_t *num_ports) {
  expect_zero(num_ports);
  *num_ports = static_cast<uint32_t>(positions(first, last).count);
  return 0;
}

uint32_t if_index_get_if_index_in_range(uint32_t first, uint32_t last, uint32_t *if_index,
                                        uint32_t position) {
  expect_zero(if_index);
  const Positions range = positions(first, last);
  if (position >= range.count) {
    standin::misuse("0x%x to 0x%x has no port at position %u", first, last, position);
    return 1;
  }
  *if_index = standin::ports[range.first + position].if_index;
  return 0;
}
