// The comparison of two arrays as a person wants it: every parameter with both values and what the
// library says of it alone, besides the library's verdict on the whole.
#pragma once

#include "arrays.h"
#include "vocabulary.h"

namespace lab {

// The VLANs over which disabled VLANs are compared; none named: they are left out of the check.
struct Twins {
  bool named = false;
  Bytes record;  // size in host order
};

// From a request with "twin-vlans", a bitmap record in hexadecimal.
Twins twins_of(const Json &request);

/*
 * One scope: {"global", "port", "verdict": code, "pod", "pass", "fail", "parameters": [{"type",
 * "local", "peer", "state"}]}; "local" and "peer" are there when the array has the parameter,
 * "pass" and "fail" when disabled VLANs were compared. A state is one of
 *
 *   same, different          the library compares it: alone it agrees, or disagrees
 *   same on the twin VLANs   disabled VLANs that differ on other VLANs only
 *   missing at the peer      the library compares it and refuses without it
 *   only at the peer         the library does not look at it
 *   not compared in this mode, not compared without twin VLANs, ignored on pod ports
 *   not compared without a mode
 */
Json compare(const Json &scope, Bytes local, Bytes peer, const Twins &twins);

}  // namespace lab
