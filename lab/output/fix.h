// Fixes, for a person.
#pragma once

#include <string>

#include "output/sides.h"
#include "sonic/fix.h"

namespace lab {

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left"; in the words of state files
// where a side has no rows.
std::string describe_fix(const Fix &fix, const SideNames &names = switch_names);

}  // namespace lab
