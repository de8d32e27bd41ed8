#include "extents.h"

#include <cstdint>
#include <map>

namespace {

std::map<uintptr_t, std::size_t> extents;

}  // namespace

namespace standin {

void note_extent(const void *start, std::size_t size) {
  extents[reinterpret_cast<uintptr_t>(start)] = size;
}

void forget_extent(const void *start) {
  extents.erase(reinterpret_cast<uintptr_t>(start));
}

std::size_t extent_from(const void *at) {
  const auto address = reinterpret_cast<uintptr_t>(at);
  auto next = extents.upper_bound(address);
  if (next == extents.begin()) return SIZE_MAX;
  const auto &[start, size] = *--next;
  const std::size_t into = address - start;
  return into <= size ? size - into : SIZE_MAX;
}

}  // namespace standin
