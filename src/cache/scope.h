// A scope: the switch, or one interface, and the parameters that belong to it.
#pragma once

#include <cstdint>

#include "foundation/catalogue.h"

namespace mcec::cache {

// Call each(type, if_index) for every parameter of a scope in the order of the types: those of the
// switch are kept under index 0.
template <class Each>
void for_each_of_scope(int32_t gbl, uint32_t if_index, Each each) {
  const Scope scope = gbl != 0 ? Scope::GLOBAL : Scope::INTERFACE;
  for (const Parameter &parameter : parameters()) {
    if (parameter.scope == scope) each(parameter.type, gbl != 0 ? 0 : if_index);
  }
}

}  // namespace mcec::cache
