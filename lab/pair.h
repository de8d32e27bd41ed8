// The two switches on the desk: two processes, joined by a socket, and the lab's line to each.
#pragma once

#include <sys/types.h>

#include <array>
#include <stdexcept>
#include <string>

#include "vocabulary.h"

namespace lab {

struct LastLines;

inline constexpr std::array<const char *, 2> switch_names = {"left", "right"};

// A switch process died, or could not do what it was asked.
struct SwitchFailed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Switch {
  pid_t pid = -1;
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

// Ask the switches that `asked` names, all before the first reply is awaited: they may have to talk
// to one another. The replies of the others are null. Throws SwitchFailed.
std::array<Json, 2> ask(Pair &pair, const std::array<bool, 2> &asked, const Json &request);

}  // namespace lab
