// What the targets share: a property of any input, and an input taken apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

using Bytes = std::vector<uint8_t>;

inline void must(bool is_true, const char *property) {
  if (is_true) return;
  std::fprintf(stderr, "It is not true that %s\n", property);
  std::abort();
}

// Past its end everything is 0.
struct Input {
  const uint8_t *data;
  std::size_t size;

  uint8_t byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  uint16_t half() {
    const unsigned high = byte();
    return uint16_t(high << 8 | byte());
  }
  uint32_t word() {
    const uint32_t high = half();
    return high << 16 | half();
  }
  Bytes bytes(std::size_t count) {
    Bytes taken(count);
    for (uint8_t &one : taken) one = byte();
    return taken;
  }
};

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t *data,
                                                                             std::size_t size);
