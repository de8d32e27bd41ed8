// The words in which people read what a check found.
#pragma once

#include <string>

#include "output/sides.h"
#include "report/scope.h"

namespace lab {

// "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)", "ok (0x00000000)".
std::string describe_result(uint32_t code);

// "DIFFERENT: loop-guard   (STP_MCEC_ERR_TYPE1_LOOP_GUARD, 0x40DD0040)", "agrees".
std::string describe_code(const ScopeReport &scope, std::size_t side,
                          const SideNames &names = switch_names);

// "switch", "port 0x1000 (pod)", "channel 20: 0x1000 on the left, 0x2000 on the right".
std::string describe_scope(const ScopeReport &scope, const SideNames &names = switch_names);

// How a parameter compares. Where the switches see it differently, each is named; of a parameter
// that one of them lacks, the other's view counts.
std::string describe_states(const ParameterReport &parameter,
                            const SideNames &names = switch_names);

// "a reason (until 2026-12-31)".
std::string describe_acceptance(const Acceptance &acceptance);

// What is wrong, in the first line of a comparison: "neither switch has a multi-chassis channel".
const char *describe_incomplete(Incomplete reason);

// "same", "missing at the peer".
const char *state_name(State state);

// The values of a parameter as texts of which everything can be seen.
std::array<std::optional<std::string>, 2> find_visible_texts(const ParameterReport &parameter);

// "a, b and 3 more".
std::string list_first(const std::vector<std::string> &texts, std::size_t most,
                       const char *between = ", ");

}  // namespace lab
