#include <set>

#include "avl.h"
#include "internal.h"

struct Less {
  int (*compare)(const void *, const void *);

  bool operator()(const void *a, const void *b) const { return compare(a, b) < 0; }
};

struct avl_tree {
  std::set<void *, Less> nodes;
};

namespace {

uint32_t trees = 0;

}  // namespace

avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags) {
  if (flags != 0) standin::misuse("the flags of a tree are 0x%x; expected 0", flags);
  ++trees;
  return new avl_tree_t{std::set<void *, Less>(Less{compare})};
}

void avl_destroy(avl_tree_t *tree, void (*release)(void *node)) {
  --trees;
  for (void *node : tree->nodes) release(node);
  delete tree;
}

void *avl_find(avl_tree_t *tree, const void *key) {
  const auto found = tree->nodes.find(const_cast<void *>(key));
  return found != tree->nodes.end() ? *found : nullptr;
}

uint32_t avl_insert(avl_tree_t *tree, void *node) {
  if (tree->nodes.insert(node).second) return 0;
  standin::misuse("a node with the same key is already in the tree");
  return 1;
}

uint32_t avl_delete(avl_tree_t *tree, void *node) {
  const auto found = tree->nodes.find(node);
  if (found == tree->nodes.end() || *found != node) {
    standin::misuse("the node is not in the tree");
    return 1;
  }
  tree->nodes.erase(found);
  return 0;
}

void standin_tree_walk(const void *tree, void (*each)(const void *node, void *context),
                       void *context) {
  for (const void *node : static_cast<const avl_tree_t *>(tree)->nodes) each(node, context);
}

uint32_t standin_trees() {
  return trees;
}
