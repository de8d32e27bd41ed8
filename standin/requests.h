// Messages and command requests, as the transport and the request library see them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace standin {

struct Message {
  uint32_t opcode;
  std::optional<std::vector<uint8_t>> payload;
};

}  // namespace standin
