// Checks for a person: the verdict in words, the parameters side by side, and what they come to.
#pragma once

#include <string>

#include "show/show.h"

namespace lab {

// "agree", "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)".
std::string code_text(const Json &result);

// "DIFFERENT: loop-guard   (STP_MCEC_ERR_TYPE1_LOOP_GUARD, 0x40DD0040)".
std::string verdict_text(const Json &check, const std::string &side);

// "switch", "port 0x1000 (pod)", "channel 20: 0x1000 on left, 0x2000 on right".
std::string scope_title(const Json &check);

// The scopes of a check, and, of several, a summary.
void show_checks(const Json &checks, const ShowOptions &options);

// How many scopes were looked at, how many differ and by what.
void show_summary(const Json &checks, const ShowOptions &options);

// Scopes as they are and as they would be.
void show_now_and_then(const Json &now, const Json &then, const std::string &side,
                       const ShowOptions &options);

}  // namespace lab
