// The left and the right switch: two processes that share a socket, and a control socket to each.
#pragma once

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

#include "pair/protocol.h"
#include "switch/names.h"
#include "text/child.h"
#include "text/file.h"

namespace lab {

struct LastLines;

// A switch process died, or a request failed.
struct SwitchFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Switch {
  std::unique_ptr<LastLines, void (*)(LastLines *)> last_lines{nullptr, nullptr};
  ChildProcess process;
  Descriptor control;
};

// Both switch processes. The destructor ends them.
struct Pair {
  std::array<Switch, 2> switches;

  Pair();
};

// The operations of each switch, in order. A switch without operations gets no request.
using Requests = std::array<std::vector<Operation>, 2>;
using Replies = std::array<Reply, 2>;

// Sends the requests and returns the replies. Sends both before it reads a reply, because a check
// exchanges arrays between the switches. `log`: replies contain the event history. Throws
// SwitchFailed and Interrupted.
Replies ask(Pair &pair, const Requests &requests, bool log = false);

}  // namespace lab
