// Shared by the three checks: validation of the two arrays, comparison of a local value with the
// peer's.
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/catalogue.h"
#include "foundation/runtime.h"

namespace mcec::check {

// The result of a check that has ended, or empty if it goes on.
using CheckResult = std::optional<uint32_t>;
constexpr CheckResult no_result = std::nullopt;

// Ends the check if an array is missing.
CheckResult missing_array(Step step, const void *local, const void *remote);

// Returns the parameter of a type if the check of `compared` includes it, else nullptr.
const Parameter *find_compared(stp_mcec_compared compared, uint16_t type);

// Finds the peer's value of a parameter. Ends the check if there is none.
CheckResult find_peer_value(Step step, const void *remote, uint16_t type, Tlv &found);

// True if the values are equal over the local length; a shorter peer value differs.
bool values_agree(Bytes local, Bytes remote);

// Logs that the check fails on this parameter, and returns its mismatch code.
uint32_t log_mismatch(Step step, const Parameter &parameter);

// Compares a local entry with the peer's, if the check of `compared` includes its parameter.
CheckResult compare(Step step, stp_mcec_compared compared, const Tlv &local, const void *remote,
                    bool on_pod_port);

}  // namespace mcec::check
