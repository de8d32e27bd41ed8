/*
 * AVL trees: ordered trees of nodes that the caller owns.
 *
 * A node is an arbitrary block; the tree stores its address and accesses it only through the
 * comparison function.
 */
#ifndef DRAIMIOFAF_PLATFORM_AVL_H
#define DRAIMIOFAF_PLATFORM_AVL_H

#include <stdint.h>

/* A tree, defined by the platform. */
typedef struct avl_tree avl_tree_t;

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Returns an empty tree, never NULL. compare: returns less than 0, 0, or greater than 0 for two
 * nodes (or a node and a key with the same layout). flags: 0. The library creates one tree, when it
 * is loaded.
 */
avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags);

/* Calls release for every node, in any order, then frees the tree. release frees its node; the tree
 * must not access a node after that. */
void avl_destroy(avl_tree_t *tree, void (*release)(void *node));

/* Returns the node that compares equal to key, or NULL. key is valid only during the call. */
void *avl_find(avl_tree_t *tree, const void *key);

/* Inserts a node; no node in the tree compares equal to it. This cannot fail; the result is
 * ignored. */
uint32_t avl_insert(avl_tree_t *tree, void *node);

/* Removes a node that is in the tree, without freeing it. The result is ignored. */
uint32_t avl_delete(avl_tree_t *tree, void *node);

#ifdef __cplusplus
}
#endif

#endif
