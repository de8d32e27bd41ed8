// The comparison of two arrays as a person wants it: every parameter with both values and what the
// library finds about it alone, in addition to its verdict on the whole.
#pragma once

#include "pair/protocol.h"

namespace lab {

// Failures that a scenario orders are for the library. The lab's own work with the platform is left
// out; the library is called within one of these.
struct LibraryCall {
  LibraryCall();
  LibraryCall(const LibraryCall &) = delete;
  LibraryCall &operator=(const LibraryCall &) = delete;
  ~LibraryCall();
};

// One scope of a check; an array without bytes is none. `twins`: nothing: disabled VLANs are left
// out.
View compare(const Scope &scope, Bytes local, Bytes peer, const std::optional<Vlans> &twins);

}  // namespace lab
