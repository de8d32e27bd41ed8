// The check of a property, and a reader of the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

using Bytes = std::vector<uint8_t>;

// Aborts if a property does not hold.
inline void must(bool holds, const char *property) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", property);
  std::abort();
}

// Reads the input. Bytes past its end are 0.
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
    Bytes read(count);
    for (uint8_t &each : read) each = byte();
    return read;
  }
};

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t *data,
                                                                             std::size_t size);
