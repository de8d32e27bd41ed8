// The comparison of two switches by their settings.
#pragma once

#include <array>
#include <functional>

#include "pair/pair.h"
#include "report/acceptance.h"
#include "report/pair.h"
#include "tasks/side.h"

namespace lab {

// Left and right.
using Sides = std::array<Side, 2>;

PairOfSettings settings_of(const Sides &sides);

struct CompareOptions {
  std::string name = {};     // of one of many pairs
  bool is_intended = false;  // left is what right should be
  bool is_strict = false;
  std::vector<AcceptEntry> accept = {};
};

// The switches may have been set up before. Throws SwitchFailed and Interrupted.
PairReport compare(Pair &pair, const Sides &sides, const CompareOptions &options);

struct Patches {
  std::array<Patch, 2> of_side;
  // What only an operator can decide: channels that a side lacks, and parameters without a fix.
  std::vector<const ScopeReport *> undecided;
  std::vector<std::pair<const ScopeReport *, const ParameterReport *>> unfixed;
};

// The patches that bring a pair into agreement where one side changes, or both: what one side can
// do alone is then left to the right one. The sides that change have rows.
Patches collect_patches(const Sides &sides, const PairReport &report,
                        const std::array<bool, 2> &changes);

// --- many pairs ---

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
