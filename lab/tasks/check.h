// What the switches of a pair find when they check scopes, as reports.
#pragma once

#include "pair/pair.h"
#include "report/scope.h"

namespace lab {

// Let both switches check these scopes. Throws SwitchFailed and Interrupted.
std::vector<ScopeReport> check_scopes(Pair &pair, const Check &check);

// Reports on the scopes, in their order, from the replies of both.
std::vector<ScopeReport> report_scopes(const Check &check, const Replies &replies);

}  // namespace lab
