// Messages, as the transport and the request library see them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace standin {

// The payload starts one byte into its buffer, off every alignment, and ends with it.
struct Message {
  uint32_t opcode;
  std::unique_ptr<uint8_t[]> buffer;  // none: no payload
  std::size_t size = 0;
  bool answered = false;

  uint8_t *payload() const { return buffer ? buffer.get() + 1 : nullptr; }
};

}  // namespace standin
