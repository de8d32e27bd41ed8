// Checks for a person: the verdict in words, the parameters side by side, and what they come to.
#pragma once

#include <string>

#include "output/show.h"

namespace lab {

// The scopes of a check, and, of several, a summary.
void show_checks(const Json &checks, const ShowOptions &options);

// How many scopes were looked at, how many differ and by what.
void show_summary(const Json &checks, const ShowOptions &options);

// Scopes as they are and as they would be.
void show_now_and_then(const Json &now, const Json &then, const std::string &side,
                       const ShowOptions &options);

}  // namespace lab
