// What a check found, as JSON.
#pragma once

#include "output/json.h"
#include "output/sides.h"
#include "report/scope.h"

namespace lab {

Json checks_to_json(const std::vector<ScopeReport> &checks, const SideNames &names = switch_names);

Json acceptance_to_json(const Acceptance &acceptance);

// {"name": "STP_MCEC_ERR_FAILURE", "code": ...}; `success` is the name of 0.
Json code_to_json(uint32_t code, const char *success);

}  // namespace lab
