// The two switches on the desk: two processes, joined by a socket, and the lab's line to each.
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

// A switch process died, or could not do what it was asked.
struct SwitchFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Switch {
  std::unique_ptr<LastLines, void (*)(LastLines *)> last_lines{nullptr, nullptr};
  ChildProcess process;
  Descriptor control;
};

// Both switches; they end with this record, and leave nothing behind.
struct Pair {
  std::array<Switch, 2> switches;

  Pair();
};

// For each switch what it is asked, in this order; no operation: it is not asked.
using Requests = std::array<std::vector<Operation>, 2>;
using Replies = std::array<Reply, 2>;

// Ask both switches before the first reply is awaited: they may have to talk to one another. `log`:
// with the lines of the event histories. Throws SwitchFailed and Interrupted.
Replies ask(Pair &pair, const Requests &requests, bool log = false);

}  // namespace lab
