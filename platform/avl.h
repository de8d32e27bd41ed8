/*
 * AVL trees: ordered trees of nodes that the caller owns.
 *
 * A node is any block; the tree keeps its address and knows it only through the comparison.
 */
#ifndef DRAIMIOFAF_PLATFORM_AVL_H
#define DRAIMIOFAF_PLATFORM_AVL_H

#include <stdint.h>

/* A tree, the platform's own. */
typedef struct avl_tree avl_tree_t;

#ifdef __cplusplus
extern "C" {
#endif

/*
 * An empty tree, never NULL. compare: less than 0, 0, or greater than 0 for two nodes (or a node
 * and a key that looks like one). flags: 0. The library creates one tree, when it is loaded.
 */
avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags);

/* Call release for every node, in any order, then release the tree itself. release frees its node,
 * so the tree does not look at a node after that. */
void avl_destroy(avl_tree_t *tree, void (*release)(void *node));

/* The node that compares equal to key, or NULL. key lives only for the call. */
void *avl_find(avl_tree_t *tree, const void *key);

/* Link a node that compares equal to none in the tree. This cannot fail; the result is not looked
 * at. */
uint32_t avl_insert(avl_tree_t *tree, void *node);

/* Unlink a node that is in the tree; it is not released. The result is not looked at. */
uint32_t avl_delete(avl_tree_t *tree, void *node);

#ifdef __cplusplus
}
#endif

#endif
