// A platform that costs next to nothing, so that what is measured is the library. It is part of the
// executable, and the library is the one that is shipped: the executable's operations come before
// those of the stand-in. Nothing is checked here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cmd_req.h"
#include "draimiofaf/types.h"
#include "mts.h"

struct mts_msg {
  uint32_t opcode;
  uint32_t cmd_id;
  uint32_t ranges[6];  // of STP_MCEC_ATTR_IFINDEX, one range
};

struct cmd_req {
  mts_msg_t *msg;
};

namespace bench {

// Ports have these indexes, and each is a member of a multi-chassis channel.
constexpr uint32_t first_port = 0x1000;
constexpr uint32_t port_count = 100000;

// While this is set, history lines are kept there.
extern std::vector<std::string> *kept;

}  // namespace bench
