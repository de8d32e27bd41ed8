// Checks scopes on both switches of a pair and builds the reports.
#pragma once

#include "pair/pair.h"
#include "report/scope.h"

namespace lab {

// Checks the scopes on both switches. Throws SwitchFailed and Interrupted.
std::vector<ScopeReport> check_scopes(Pair &pair, const Check &check);

// Builds the reports of the scopes, in their order, from the replies of both switches.
// Throws SwitchFailed if a reply does not have an answer for each scope.
std::vector<ScopeReport> report_scopes(const Check &check, const Replies &replies);

}  // namespace lab
