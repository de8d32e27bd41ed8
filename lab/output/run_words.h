// The words in which people read what a run found.
#pragma once

#include <string>

#include "report/run.h"

namespace lab {

// "accepted", "none", or the message of a refusal.
std::string describe_answer(const SwitchReport &report);

// "stp-mode", "ifi-port-type@0x1000".
std::string describe_record(const ParameterRecord &record);

// "left verdict", "right verdict of PortChannel10", "differ".
std::string describe_subject(const ExpectationReport &expectation);

// "ok", "STP_MCEC_ERR_FAILURE"; of a check "agree".
std::string code_name(const ResultCode &result);
std::string code_name(const CheckCode &result);

// "stp-mode: MST, loop-guard: Enabled"; "nothing".
std::string describe_finding(const Finding &finding);

}  // namespace lab
