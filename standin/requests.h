// Messages, as the transport and the request library see them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

// The payload starts one byte into its buffer, off every alignment, and ends with it.
struct mts_msg {
  uint32_t opcode;
  std::unique_ptr<uint8_t[]> buffer;  // none: no payload
  std::size_t size = 0;
  bool answered = false;

  uint8_t *payload() const { return buffer ? buffer.get() + 1 : nullptr; }
};
