// TLV arrays and the platform's blocks, as the lab handles them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "mtrack.h"

namespace lab {

using Bytes = std::vector<uint8_t>;

struct ReleaseBlock {
  void operator()(void *block) const { mtrack_free(block); }
};

// A block that the library handed over.
template <class Object>
using Block = std::unique_ptr<Object, ReleaseBlock>;

// Failures that a scenario orders are for the library. The lab's own work with the platform is left
// out; the library is called within one of these.
struct LibraryCall {
  LibraryCall();
  LibraryCall(const LibraryCall &) = delete;
  LibraryCall &operator=(const LibraryCall &) = delete;
  ~LibraryCall();
};

struct Entry {
  uint16_t type;
  Bytes value;
};

Bytes build_array(const std::vector<Entry> &entries);

// The entries of an array, as far as they can be read; none of no array.
std::vector<Entry> entries_of(const void *array);

}  // namespace lab
