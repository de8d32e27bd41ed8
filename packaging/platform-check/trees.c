/* Trees: avl.h. */
#include <draimiofaf/platform/avl.h>
#include <stdlib.h>
#include <string.h>

#include "check.h"

/* A node's key comes first, as in the library's cache. */
typedef struct node {
  uint32_t key;
  uint32_t is_released;
  uint8_t content[24];
} node_t;

enum { node_count = 500 };

static node_t nodes[node_count];

/* The parts of a node that the tree must not touch. */
static int is_intact(const node_t *node) {
  return node->key < node_count && has_pattern(node->content, sizeof node->content, node->key);
}

static int compare(const void *a, const void *b) {
  const node_t *left = a;
  const node_t *right = b;
  REQUIRE(left->is_released == 0 && right->is_released == 0, "a released node is compared");
  return (left->key > right->key) - (left->key < right->key);
}

/* 0 to node_count - 1, out of order. */
static uint32_t shuffled(uint32_t i) {
  return i * 211 % node_count;
}

static avl_tree_t *full_tree(void) {
  avl_tree_t *tree = avl_create(compare, 0);
  REQUIRE(tree != NULL, "avl_create returned NULL");
  for (uint32_t i = 0; i < node_count; ++i) {
    node_t *node = &nodes[shuffled(i)];
    *node = (node_t){.key = shuffled(i)};
    fill_pattern(node->content, sizeof node->content, node->key);
    avl_insert(tree, node);
  }
  return tree;
}

/* Look for a key that lives no longer than the call. */
static node_t *find(avl_tree_t *tree, uint32_t wanted) {
  node_t *key = malloc(sizeof *key);
  REQUIRE(key != NULL, "the check itself: no memory");
  *key = (node_t){.key = wanted};
  node_t *found = avl_find(tree, key);
  memset(key, 0xEE, sizeof *key);
  free(key);
  return found;
}

static void verify_find(void) {
  avl_tree_t *empty = avl_create(compare, 0);
  REQUIRE(empty != NULL, "avl_create returned NULL");
  REQUIRE(find(empty, 1) == NULL, "a node is found in an empty tree");
  avl_tree_t *tree = full_tree();
  for (uint32_t key = 0; key < node_count; ++key) {
    REQUIRE(find(tree, key) == &nodes[key], "node %u is not found", key);
    REQUIRE(is_intact(&nodes[key]), "node %u was written to", key);
  }
  REQUIRE(find(tree, node_count) == NULL, "a key that is not in the tree is found");
}

static void verify_delete(void) {
  avl_tree_t *tree = full_tree();
  for (int round = 0; round < 2; ++round) {
    for (uint32_t i = 0; i < node_count; ++i) {
      if (shuffled(i) % 3 == 0) avl_delete(tree, &nodes[shuffled(i)]);
    }
    for (uint32_t key = 0; key < node_count; ++key) {
      REQUIRE(find(tree, key) == (key % 3 == 0 ? NULL : &nodes[key]), "node %u is %s", key,
              key % 3 == 0 ? "found after it was unlinked" : "not found");
      REQUIRE(is_intact(&nodes[key]), "node %u was written to", key);
    }
    for (uint32_t key = 0; key < node_count; key += 3) avl_insert(tree, &nodes[key]);
  }
}

static uint32_t released;

static void release(void *at) {
  node_t *node = at;
  REQUIRE(node >= nodes && node < nodes + node_count, "what is released is no node");
  REQUIRE(node->is_released == 0, "node %u is released twice", node->key);
  node->is_released = 1;
  ++released;
}

static void verify_destroy(void) {
  avl_tree_t *tree = full_tree();
  avl_delete(tree, &nodes[1]);
  avl_destroy(tree, release);
  REQUIRE(released == node_count - 1, "%u of %u nodes are released", released, node_count - 1U);
  tree = full_tree();
  REQUIRE(find(tree, 1) == &nodes[1], "a node is not found in the next tree");
}

const contract_t tree_contracts[] = {
    {"avl.find", "a tree finds the nodes that are linked, and writes to none", verify_find},
    {"avl.delete", "a node that is unlinked is not found, and not released", verify_delete},
    {"avl.destroy", "each node is released once, and not looked at after that", verify_destroy},
    {NULL, NULL, NULL},
};
