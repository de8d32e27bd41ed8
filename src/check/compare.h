// What the three checks share: the test of their two arrays, and the comparison of a local value
// with the peer's.
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/catalogue.h"
#include "foundation/runtime.h"

namespace mcec::check {

// The result that ends a check, or nothing when it goes on.
using Ended = std::optional<uint32_t>;
constexpr Ended go_on = std::nullopt;

// A missing array ends a check.
Ended missing_array(Step step, const void *local, const void *remote);

// The parameter of a type when it counts in the check of `compared`, else nullptr.
const Parameter *find_compared(stp_mcec_compared compared, uint16_t type);

// Find the peer's value of a parameter; without one the check ends.
Ended find_at_peer(Step step, const void *remote, uint16_t type, Tlv &found);

// Equal over the local length; a peer's value that is shorter differs.
bool agree(Bytes local, Bytes remote);

// The check fails on this parameter.
uint32_t mismatch(Step step, const Parameter &parameter);

// Compare a local entry with the peer's, when it counts in the check of `compared`.
Ended compare(Step step, stp_mcec_compared compared, const Tlv &local, const void *remote,
              bool on_pod_port);

}  // namespace mcec::check
