// The comparison of two switches by their settings.
#pragma once

#include <array>

#include "report/pair.h"
#include "tasks/side.h"

namespace lab {

// Left and right.
using Sides = std::array<Side, 2>;

PairOfSettings settings_of(const Sides &sides);

// Throws SwitchFailed and Interrupted.
PairReport compare(const Sides &sides);

// The patches that bring a pair into agreement where one side changes, or both: what one side can do
// alone is then left to the right one. Both sides have rows.
std::array<Patch, 2> collect_patches(const Sides &sides, const PairReport &report,
                                     const std::array<bool, 2> &changes);

}  // namespace lab
