// TLV arrays and the platform's blocks, as the lab handles them.
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

// A block that the library handed over.
template <class Object>
using Block = std::unique_ptr<Object, ReleaseBlock>;

Bytes build_array(const std::vector<Entry> &entries);

// The entries of an array, as far as they can be read; none of an array without bytes.
std::vector<Entry> entries_of(const Bytes &array);

}  // namespace lab
