// What a parameter that differs does to a real pair, and what is done about it.
#pragma once

#include <cstdint>

namespace lab {

struct Advice {
  uint16_t type;
  const char *harm;
  const char *fix;
};

// Every parameter has its row.
const Advice &advice_on(uint16_t type);

}  // namespace lab
