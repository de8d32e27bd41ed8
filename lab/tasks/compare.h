// The comparison of two switches from what they are set to: the document of `mcec-lab compare`.
#pragma once

#include <array>

#include "output/json.h"
#include "tasks/side.h"

namespace lab {

// Left and right.
using Sides = std::array<Side, 2>;

PairOfSettings settings_of(const Sides &sides);

// What compare says, as docs/lab.md tells. Throws SwitchFailed and Interrupted.
Json compare(const Sides &sides);

// Of a comparison of two sides with rows, the patches that bring the pair into step by changing one
// side, or both: then what one side can do alone the right does.
std::array<Json, 2> fixes(const Sides &sides, const Json &told, const std::array<bool, 2> &changes);

}  // namespace lab
