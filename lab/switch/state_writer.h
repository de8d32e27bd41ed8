// Lab state files: what a switch is set to, as YAML.
#pragma once

#include <string>

#include "switch/settings.h"

namespace lab {

// The state file of a switch, with all that its settings say.
std::string state_file(const Settings &settings);

}  // namespace lab
