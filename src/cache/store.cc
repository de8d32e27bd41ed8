#include "cache/store.h"

#include <utility>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"

namespace mcec::cache {
namespace {

void release(Node *node) {
  Block<Node> released(node);
  if (released->val != nullptr) mtrack_free(std::exchange(released->val, nullptr));
}

}  // namespace

Node *find(const Node &key) {
  return static_cast<Node *>(avl_find(stp_mcec_type1_cfg_avl, &key));
}

Node *add(uint32_t if_index, uint16_t type, Bytes value) {
  const auto length = static_cast<uint16_t>(value.size());
  Block<Node> node(
      static_cast<Node *>(zalloc(STP_MCEC_LIB_MEM_type1_cfg_avl_node_t, sizeof(Node))));
  if (!node) return nullptr;
  *node = key_of(if_index, type);
  node->len = length;
  node->val =
      static_cast<type1_cfg_avl_val_t *>(zalloc(STP_MCEC_LIB_MEM_type1_cfg_avl_val_t, length));
  if (node->val == nullptr) return nullptr;
  fill({node->val, length}, value);
  avl_insert(stp_mcec_type1_cfg_avl, node.get());
  return node.release();
}

PutResult put(uint32_t if_index, uint16_t type, Bytes value) {
  if (Node *node = find(if_index, type); node != nullptr) {
    if (node->val != nullptr) fill({node->val, node->len}, value);
    return {node, false};
  }
  return {add(if_index, type, value), true};
}

void remove(uint32_t if_index, uint16_t type) {
  Node *node = find(if_index, type);
  if (node == nullptr) return;
  avl_delete(stp_mcec_type1_cfg_avl, node);
  release(node);
}

}  // namespace mcec::cache

using namespace mcec;

extern "C" int stp_mcec_type1_cfg_avl_cmp_func(const void *a, const void *b) {
  const auto &left = *static_cast<const cache::Node *>(a);
  const auto &right = *static_cast<const cache::Node *>(b);
  if (left.if_index != right.if_index) return left.if_index > right.if_index ? 1 : -1;
  if (left.type != right.type) return left.type > right.type ? 1 : -1;
  return 0;
}

extern "C" void stp_mcec_type1_cfg_avl_free(void *node) {
  cache::release(static_cast<cache::Node *>(node));
}

extern "C" void stp_mcec_type1_cfg_delete_cache_node(uint16_t type, uint32_t if_index) {
  cache::remove(if_index, type);
}
