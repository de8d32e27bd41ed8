// A scope: the switch, or one interface, and the parameters that belong to it.
#pragma once

#include <cstdint>
#include <span>

#include "foundation/catalogue.h"

namespace mcec::cache {

// What a scope holds, in the order of the types, and the index it is kept under.
struct ScopeOf {
  std::span<const Parameter> parameters;
  uint32_t if_index;
};

// gbl not 0: the switch, which is kept under index 0.
inline ScopeOf scope_of(int32_t gbl, uint32_t if_index) {
  if (gbl != 0) return {parameters_of(Scope::GLOBAL), 0};
  return {parameters_of(Scope::INTERFACE), if_index};
}

}  // namespace mcec::cache
