// The switch: its ports and channels, as the managers of the platform see them.
#pragma once

#include <cstdint>
#include <vector>

namespace standin {

struct Membership {
  uint32_t counts = 0;  // 0: a record that counts as missing
  uint32_t mcec_id = 0;
};

struct Port {
  uint32_t if_index;
  uint8_t type = 0;
  uint32_t layer_mode = 0;
  bool is_pod = false;
  bool has_record = false;
  Membership membership;
};

// In the order of their indexes.
extern std::vector<Port> ports;

// nullptr when there is no such port.
Port *find_port(uint32_t if_index);

void reset_channels();
void reset_partition();

}  // namespace standin
