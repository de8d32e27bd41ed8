// What a parameter that differs does to a real pair, and what is done about it.
#pragma once

#include <cstdint>

#include "sonic/fields.h"

namespace lab {

struct Advice {
  uint16_t type;
  const char *harm;
  const char *fix;
};

const Advice &advice_on(uint16_t type);

// What a field means that gives no parameter.
const char *field_meaning(const Field &field);

}  // namespace lab
