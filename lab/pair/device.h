// A switch of the lab: a process with the library loaded over the stand-in, that does what it is
// asked and says what came of it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lab {

// The lines last logged, readable by the lab also when the switch has died.
struct LastLines {
  static constexpr uint32_t kept = 12;
  uint32_t count;
  char text[kept][240];
};

// Serve requests from `control` until it closes, as the left switch, 0, or the right one. Arrays
// are exchanged with the other switch over `peer`.
void serve(int control, int peer, std::size_t side, LastLines &last_lines);

}  // namespace lab
