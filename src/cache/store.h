// The cache as the rest of the library uses it: find a value, add one, put one.
#pragma once

#include <cstdint>

#include "draimiofaf/types.h"
#include "foundation/wire.h"

namespace mcec::cache {

using Node = type1_cfg_avl_node_t;

// The key of a parameter: a node without a value.
inline Node key(uint32_t if_index, uint16_t type) {
  return {if_index, type, 0, nullptr};
}

// The node of a key, nullptr when the parameter is not cached.
Node *find(const void *key);

inline Node *find(uint32_t if_index, uint16_t type) {
  const Node wanted = key(if_index, type);
  return find(&wanted);
}

// What a node holds, as in a TLV.
inline Bytes value_of(const Node &node) {
  return node.val != nullptr ? Bytes{node.val, node.len} : Bytes{};
}

// Create the entry of a parameter that is not cached. nullptr: no memory, nothing is changed.
Node *add(uint32_t if_index, uint16_t type, Bytes value);

// The entry that holds a value now, nullptr when there was no memory for it.
struct Put {
  Node *node;
  bool added;
};

// Give a parameter a value: into its block, which keeps its length, or into a new entry.
Put put(uint32_t if_index, uint16_t type, Bytes value);

}  // namespace mcec::cache
