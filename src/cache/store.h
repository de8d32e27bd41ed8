// The cache: find, add, replace and remove values.
#pragma once

#include <cstdint>

#include "foundation/catalogue.h"

namespace mcec::cache {

using Node = type1_cfg_avl_node_t;

// Returns the key of a parameter: a node without a value.
inline Node key_of(uint32_t if_index, uint16_t type) {
  return {.if_index = if_index, .type = type, .len = 0, .val = nullptr};
}

// Returns nullptr if the parameter is not cached.
Node *find(const Node &key);

inline Node *find(uint32_t if_index, uint16_t type) {
  return find(key_of(if_index, type));
}

// Returns the value of a node, as in a TLV.
inline Bytes value_of(const Node &node) {
  return node.val != nullptr ? Bytes{node.val, node.len} : Bytes{};
}

// Adds a parameter that is not cached. Returns nullptr, and changes nothing, if memory is
// exhausted.
Node *add(uint32_t if_index, uint16_t type, Bytes value);

// The entry with the new value, or nullptr if memory is exhausted.
struct PutResult {
  Node *node;
  bool added;
};

// Sets the value of a parameter, in its existing block, which keeps its length, or in a new entry.
PutResult put(uint32_t if_index, uint16_t type, Bytes value);

// Does nothing if the parameter is not cached.
void remove(uint32_t if_index, uint16_t type);

// A scope: the switch, which is cached under index 0, or an interface.
struct CacheScope {
  std::span<const Parameter> parameters;  // in ascending order of type
  uint32_t if_index;
};

inline CacheScope scope_of(int32_t gbl, uint32_t if_index) {
  if (gbl != 0) return {parameters_of(Scope::GLOBAL), 0};
  return {parameters_of(Scope::INTERFACE), if_index};
}

}  // namespace mcec::cache
