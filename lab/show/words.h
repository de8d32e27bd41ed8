// The words in which people read the documents of a comparison.
#pragma once

#include <string>

#include "outcome/json.h"

namespace lab {

// "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)", "agree".
std::string verdict_text(const Json &verdict);

// What is said of a parameter. Where the switches see it differently, each is told; of a parameter
// that one of them lacks, the other's view counts.
std::string state_text(const Json &parameter);

bool is_out_of_step(const std::string &state);

}  // namespace lab
