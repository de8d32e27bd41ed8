// TLV arrays, and memory blocks of the platform.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "mtrack.h"
#include "switch/settings.h"

namespace lab {

struct ReleaseBlock {
  void operator()(void *block) const { mtrack_free(block); }
};

// A block that the library returned to its caller.
template <class Object>
using Block = std::unique_ptr<Object, ReleaseBlock>;

Bytes build_array(const std::vector<Entry> &entries);

// Returns the entries of an array, up to the first that cannot be read.
std::vector<Entry> entries_of(const Bytes &array);

}  // namespace lab
