// The two switches on the desk: two processes, joined by a socket, and the lab's line to each.
#pragma once

#include <sys/types.h>

#include <array>
#include <optional>
#include <stdexcept>
#include <string>

#include "pair/protocol.h"
#include "switch/names.h"
#include "text/child.h"

namespace lab {

struct LastLines;

// A switch process died, or could not do what it was asked.
struct SwitchFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Switch {
  ChildProcess process;
  int control = -1;
  LastLines *last_lines = nullptr;
};

// Both switches; they end with this record, and leave nothing behind.
struct Pair {
  std::array<Switch, 2> switches;

  Pair();
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;
  ~Pair();
};

// For each switch what it is asked, or answered.
using Requests = std::array<std::optional<Request>, 2>;
using Replies = std::array<std::optional<Reply>, 2>;

// Ask both switches before the first reply is awaited: they may have to talk to one another. Throws
// SwitchFailed and Interrupted.
Replies ask(Pair &pair, const Requests &requests);

// Ask one switch one thing.
template <class Asked>
typename Asked::Answer ask(Pair &pair, std::size_t which, Asked asked) {
  Requests requests;
  requests[which] = Request{false, std::move(asked)};
  return std::get<typename Asked::Answer>(ask(pair, requests)[which]->answer);
}

}  // namespace lab
