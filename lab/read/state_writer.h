// Lab state files: what a switch is set to, as YAML.
#pragma once

#include <string>

#include "settings/settings.h"

namespace lab {

// The state file of a switch, with all that its settings say.
std::string state_file(const Settings &settings);

// The value of a parameter as such a file writes it: rapid-pvst, "10-20", {1: "10-20"}.
std::string written(const Entry &entry);

}  // namespace lab
