// What the three checks share: the look at their two arrays, and the walk that compares them.
#pragma once

#include <cstdint>

#include "foundation/catalogue.h"
#include "foundation/runtime.h"

namespace mcec::check {

// A missing array ends a check.
Ended missing_array(const char *operation, const void *local, const void *remote);

// The line of an entry that cannot be read, or that the peer lacks; returns the code.
uint32_t log_unread(const char *operation, uint32_t code, int line = __builtin_LINE());

// Find the peer's value of a parameter; without one the check ends.
Ended find_at_peer(const char *operation, const void *remote, uint16_t type, Tlv &found);

// Equal over the local length; a peer's value that is shorter differs.
bool agree(Bytes local, Bytes remote);

// The check fails on this parameter.
uint32_t mismatch(const char *operation, uint16_t type);

// One local value against the peer's.
Ended compare_value(const char *operation, bool is_pod_hif, const Tlv &local, const void *remote);

// Walk the local array: each(tlv) for every entry that the check of `compared` looks at.
template <class Each, class Unread>
Ended walk_compared(const void *local, Compared compared, Unread unread, Each each) {
  return walk(local, tlv_count(local), unread, [&](const Tlv &tlv) -> Ended {
    const Parameter *parameter = find_parameter(tlv.type);
    return parameter != nullptr && parameter->compared == compared ? each(tlv) : go_on;
  });
}

}  // namespace mcec::check
