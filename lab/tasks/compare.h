// Compares two switches by their settings.
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

SettingsPairView settings_of(const Sides &sides);

struct CompareOptions {
  std::string name = {};     // of the pair, if it is one of many
  bool is_intended = false;  // left is the intended state of right
  bool is_strict = false;
  std::vector<AcceptEntry> accept = {};
};

// Compares two switches; `pair` can be used for several comparisons. Throws SwitchFailed and
// Interrupted.
PairReport compare(Pair &pair, const Sides &sides, const CompareOptions &options);

struct Patches {
  std::array<Patch, 2> of_side;
  // Differences that the operator must resolve.
  std::vector<const ScopeReport *> undecided;  // channels that one side lacks
  std::vector<std::pair<const ScopeReport *, const ParameterReport *>> unfixed;
};

// Collects the patches that make a pair agree. `patched`: the sides to change, which must have
// rows. If both change, a fix that one side can make alone goes into the patch of the right side.
Patches collect_patches(const Sides &sides, const PairReport &report,
                        const std::array<bool, 2> &patched);

// --- many pairs ---

struct PairEntry {
  std::string name;  // empty: the only pair
  std::array<ParsedSource, 2> sources;

  bool operator==(const PairEntry &) const = default;
};

// Compares all pairs and calls the listener with each result as soon as it is complete. A
// comparison that takes more than three times `limits.reading_time` is aborted and reported as an
// error. Throws Interrupted, and std::system_error if the event loop cannot be set up.
void compare_all(const std::vector<PairEntry> &pairs, const CompareOptions &options,
                 const ReadLimits &limits, const std::function<void(const PairResult &)> &listener);

}  // namespace lab
