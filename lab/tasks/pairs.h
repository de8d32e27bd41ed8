// Comparisons of many pairs: a process for each, as many at a time as there are processors.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "report/pairs.h"

namespace lab {

struct PairEntry {
  std::string name;
  std::array<std::string, 2> sources;
};

// Compare all pairs; the listener gets the results in the order in which they are found. Throws
// Interrupted, and std::system_error where no process can be made.
void compare_all(const std::vector<PairEntry> &pairs,
                 const std::function<void(const PairResult &)> &listener);

}  // namespace lab
