/*
 * Trees: those of the C library, which keep a node's address as the library of the trees wants it.
 * tsearch takes a little memory for each node from malloc; with none left the process ends, since
 * linking a node has no failure.
 */
#include <draimiofaf/platform/avl.h>
#include <search.h>
#include <stdio.h>
#include <stdlib.h>

enum { max_trees = 4 };

struct avl_tree {
  int (*compare)(const void *, const void *); /* NULL: a free place */
  void *root;
};

static avl_tree_t trees[max_trees];

avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags) {
  (void)flags;
  for (avl_tree_t *tree = trees; tree < trees + max_trees; ++tree) {
    if (tree->compare != NULL) continue;
    *tree = (avl_tree_t){compare, NULL};
    return tree;
  }
  fprintf(stderr, "platform: more than %d trees\n", max_trees);
  abort();
}

void avl_destroy(avl_tree_t *tree, void (*release)(void *node)) {
  tdestroy(tree->root, release);
  *tree = (avl_tree_t){NULL, NULL};
}

void *avl_find(avl_tree_t *tree, const void *key) {
  void *const *found = tfind(key, &tree->root, tree->compare);
  return found != NULL ? *found : NULL;
}

uint32_t avl_insert(avl_tree_t *tree, void *node) {
  if (tsearch(node, &tree->root, tree->compare) == NULL) {
    fprintf(stderr, "platform: no memory to link a node\n");
    abort();
  }
  return 0;
}

uint32_t avl_delete(avl_tree_t *tree, void *node) {
  return tdelete(node, &tree->root, tree->compare) != NULL ? 0 : 1;
}
