// A switch of the lab: a process with the library loaded over the stand-in, that does what it is
// asked and says what came of it.
#pragma once

#include <cstdint>

namespace lab {

// The lines last logged, readable by the lab also when the switch has died.
struct LastLines {
  static constexpr uint32_t kept = 12;
  uint32_t count;
  char text[kept][240];
};

// Serve requests from `control` until it closes. Arrays are exchanged with the other switch over
// `peer`, on which the left switch speaks first.
void serve(int control, int peer, bool speaks_first, LastLines &last_lines);

}  // namespace lab
