// A switch process: it runs the library over the stand-in, executes requests and replies.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lab {

// The last lines of the event history, in memory shared with the lab: readable after a crash.
struct LastLines {
  static constexpr uint32_t kept = 12;
  uint32_t count;  // of all lines logged
  char text[kept][240];
};

// Serves requests from `control` until it is closed, as the left (0) or the right switch (1).
// Exchanges arrays with the other switch over `peer`.
void serve(int control, int peer, std::size_t side, LastLines &last_lines);

}  // namespace lab
