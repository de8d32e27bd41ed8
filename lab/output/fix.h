// Fixes, for a person.
#pragma once

#include <string>

#include "output/sides.h"
#include "sonic/fix.h"

namespace lab {

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left"; in the words of state files
// where a side has no rows.
std::string describe_fix(const Fix &fix, const SideNames &names = switch_names);

// Does a patch change the mode of spanning tree? On a running switch that takes two steps.
bool has_mode_change(const std::vector<PatchOperation> &patch);

inline constexpr char mode_advice[] =
    "the patch changes the mode of spanning tree: disable the old mode on the switch first, then "
    "enable the new one";

}  // namespace lab
