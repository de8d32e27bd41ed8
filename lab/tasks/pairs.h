// Comparisons of many pairs.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "report/pair.h"
#include "tasks/compare.h"

namespace lab {

// One of many pairs, or, without a name, the only one.
struct PairEntry {
  std::string name;
  std::array<ParsedSource, 2> sources;

  bool operator==(const PairEntry &) const = default;
};

// Compare all pairs; the listener gets the results in the order in which they are found. A
// comparison that does not end in three times the time of a reading is given up. Throws
// Interrupted, and std::system_error where no process can be made.
void compare_all(const std::vector<PairEntry> &pairs, const CompareOptions &options,
                 const ReadLimits &limits, const std::function<void(const PairResult &)> &listener);

}  // namespace lab
