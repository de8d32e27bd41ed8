/* Trees: those of the C library. They allocate memory for each node; if that fails, the process
 * aborts, because avl_insert cannot fail. */
#include <draimiofaf/platform/avl.h>
#include <search.h>
#include <stdlib.h>

struct avl_tree {
  int (*compare)(const void *, const void *);
  void *root;
};

avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags) {
  (void)flags;
  avl_tree_t *tree = malloc(sizeof *tree);
  if (tree == NULL) abort();
  *tree = (avl_tree_t){compare, NULL};
  return tree;
}

void avl_destroy(avl_tree_t *tree, void (*release)(void *node)) {
  tdestroy(tree->root, release);
  free(tree);
}

void *avl_find(avl_tree_t *tree, const void *key) {
  void *const *found = tfind(key, &tree->root, tree->compare);
  return found != NULL ? *found : NULL;
}

uint32_t avl_insert(avl_tree_t *tree, void *node) {
  if (tsearch(node, &tree->root, tree->compare) == NULL) abort();
  return 0;
}

uint32_t avl_delete(avl_tree_t *tree, void *node) {
  return tdelete(node, &tree->root, tree->compare) != NULL ? 0 : 1;
}
