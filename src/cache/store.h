// The cache as the rest of the library uses it: find a value, add one, put one, remove one.
#pragma once

#include <cstdint>

#include "foundation/catalogue.h"

namespace mcec::cache {

using Node = type1_cfg_avl_node_t;

// The key of a parameter: a node without a value.
inline Node key_of(uint32_t if_index, uint16_t type) {
  return {.if_index = if_index, .type = type, .len = 0, .val = nullptr};
}

// nullptr when the parameter is not cached.
Node *find(const Node &key);

inline Node *find(uint32_t if_index, uint16_t type) {
  return find(key_of(if_index, type));
}

// The value of a node, as in a TLV.
inline Bytes value_of(const Node &node) {
  return node.val != nullptr ? Bytes{node.val, node.len} : Bytes{};
}

// Create the entry of a parameter that is not cached. nullptr: no memory, nothing is changed.
Node *add(uint32_t if_index, uint16_t type, Bytes value);

// The entry that has a value now, nullptr when there was no memory for it.
struct Put {
  Node *node;
  bool added;
};

// Give a parameter a value: into its block, which keeps its length, or into a new entry.
Put put(uint32_t if_index, uint16_t type, Bytes value);

// Nothing happens when the parameter is not cached.
void remove(uint32_t if_index, uint16_t type);

// A scope, its parameters in the order of their types: the switch (gbl not 0), which is kept under
// index 0, or an interface.
struct ScopeOf {
  std::span<const Parameter> parameters;
  uint32_t if_index;
};

inline ScopeOf scope_of(int32_t gbl, uint32_t if_index) {
  if (gbl != 0) return {parameters_of(Scope::GLOBAL), 0};
  return {parameters_of(Scope::INTERFACE), if_index};
}

}  // namespace mcec::cache
