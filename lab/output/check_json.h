// What a check found, as JSON.
#pragma once

#include "output/json.h"
#include "report/scope.h"

namespace lab {

Json scope_to_json(const ScopeReport &scope);
Json checks_to_json(const std::vector<ScopeReport> &checks);

// {"name": "STP_MCEC_ERR_FAILURE", "code": ...}; `success` is the name of 0.
Json code_to_json(uint32_t code, const char *success);

}  // namespace lab
