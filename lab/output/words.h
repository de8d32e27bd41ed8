// The words in which people read the documents of a check.
#pragma once

#include <string>

#include "output/json.h"

namespace lab {

const char *other_side(const std::string &side);

// "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)".
std::string code_text(const Json &result);

// "DIFFERENT: loop-guard   (STP_MCEC_ERR_TYPE1_LOOP_GUARD, 0x40DD0040)", "agrees".
std::string verdict_text(const Json &check, const std::string &side);

// "switch", "port 0x1000 (pod)", "channel 20: 0x1000 on the left, 0x2000 on the right".
std::string scope_title(const Json &check);

// What is said of a parameter. Where the switches see it differently, each is told; of a parameter
// that one of them lacks, the other's view counts.
std::string state_text(const Json &parameter);

}  // namespace lab
