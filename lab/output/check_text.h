// Checks for a person: the verdict in words, the parameters side by side, and a summary.
#pragma once

#include "output/style.h"
#include "report/scope.h"

namespace lab {

// The scopes of a check, and, of several, a summary.
void print_checks(const std::vector<ScopeReport> &checks, const Style &style);

// A scope as it is and as it would be after a step on a side.
void print_now_and_then(const ScopeReport &now, const ScopeReport &then, std::size_t side,
                        const Style &style);

}  // namespace lab
