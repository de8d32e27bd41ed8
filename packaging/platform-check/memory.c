/* Memory, trees, the event history and error texts: mtrack.h, avl.h, sdwrap.h, syserr.h. */
#include <draimiofaf/platform/avl.h>
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/sdwrap.h>
#include <draimiofaf/platform/syserr.h>
#include <draimiofaf/types.h>
#include <stdalign.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "check.h"

enum { service = STP_MCEC_LIB_SERVICE_ID, mem_type = STP_MCEC_LIB_MEM_tlv_array_t };

static void *new_block(uint32_t size) {
  void *block = mtrack_alloc(service, mem_type, size);
  REQUIRE(block != NULL, "allocation of %u bytes failed", size);
  return block;
}

/* --- mtrack.h --- */

static void verify_blocks(void) {
  enum { places = 100, rounds = 3000 };
  static struct {
    void *block;
    uint32_t size, seed;
  } live[places];
  uint32_t random = 1;
  for (uint32_t round = 0; round < rounds; ++round) {
    random = random * 1103515245 + 12345;
    const uint32_t place = (random >> 16) % places;
    if (live[place].block != NULL) {
      REQUIRE(has_pattern(live[place].block, live[place].size, live[place].seed),
              "the content of a block of %u bytes has changed", live[place].size);
      mtrack_free(live[place].block);
    }
    const uint32_t size = 1 + (random >> 8) % 9000;
    live[place].block = new_block(size);
    live[place].size = size;
    live[place].seed = round;
    REQUIRE((uintptr_t)live[place].block % alignof(max_align_t) == 0,
            "the block at %p is not aligned", live[place].block);
    fill_pattern(live[place].block, size, round);
  }
}

static void verify_mem_types(void) {
  for (uint32_t type = 0; type < STP_MCEC_LIB_MEM_MAX; ++type) {
    void *block = mtrack_alloc(service, type, 16);
    REQUIRE(block != NULL, "allocation with memory type %u failed", type);
    mtrack_free(block);
  }
}

static void verify_empty_blocks(void) {
  void *block = mtrack_alloc(service, mem_type, 0);
  if (block != NULL) mtrack_free(block);
  fill_pattern(new_block(100), 100, 1);
}

static void verify_large_blocks(void) {
  char *block = mtrack_alloc(service, mem_type, UINT32_MAX);
  if (block == NULL) return;
  block[0] = block[UINT32_MAX - 1] = 1;
  mtrack_free(block);
}

static void verify_unregistering(void) {
  static const char *const mem_type_names[STP_MCEC_LIB_MEM_MAX] = {
      "A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K",
      "L", "M", "N", "O", "P", "Q", "R", "S", "T", "U"};
  for (int round = 0; round < 10; ++round) {
    void *block = new_block(500);
    fill_pattern(block, 500, 1);
    mtrack_uninit(service);
    REQUIRE(has_pattern(block, 500, 1), "the content of a block has changed");
    mtrack_free(block);
    mtrack_init("draimiofaf", service, mem_type_names, STP_MCEC_LIB_MEM_MAX);
  }
}

const contract_t memory_contracts[] = {
    {"mtrack.blocks", "blocks are aligned, do not overlap and keep their content", verify_blocks},
    {"mtrack.mem-types", "each of the 21 memory types can be allocated", verify_mem_types},
    {"mtrack.empty", "a size of 0 returns a block that can be freed, or NULL", verify_empty_blocks},
    {"mtrack.large", "a size that cannot be allocated returns NULL", verify_large_blocks},
    {"mtrack.uninit", "blocks outlive their service, which can be registered again",
     verify_unregistering},
    {NULL, NULL, NULL},
};

/* --- avl.h --- */

/* The key is the first field, as in the library's cache. */
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

/* Maps 0 to node_count - 1 to the same numbers in another order. */
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

/* Finds a key that is valid only during the call. */
static node_t *find(avl_tree_t *tree, uint32_t wanted) {
  node_t *key = malloc(sizeof *key);
  REQUIRE(key != NULL, "out of memory in the check itself");
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
              key % 3 == 0 ? "found after it was removed" : "not found");
      REQUIRE(is_intact(&nodes[key]), "node %u was written to", key);
    }
    for (uint32_t key = 0; key < node_count; key += 3) avl_insert(tree, &nodes[key]);
  }
}

static uint32_t released;

static void release(void *at) {
  node_t *node = at;
  REQUIRE(node >= nodes && node < nodes + node_count, "an address that is not a node is released");
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
    {"avl.find", "a tree finds the inserted nodes, and does not modify them", verify_find},
    {"avl.delete", "a removed node is not found, and not released", verify_delete},
    {"avl.destroy", "each node is released once, and not accessed after that", verify_destroy},
    {NULL, NULL, NULL},
};

/* --- sdwrap.h --- */

static void log_line(const char *text) {
  static sdwrap_hist_line_t record;
  record.flag = 1;
  memcpy(record.text, text, strlen(text) + 1);
  sdwrap_his_log_event_for_uuid_inst(
      service, SDWRAP_HIST_LINE_EVENT, 0, 0,
      (uint32_t)(offsetof(sdwrap_hist_line_t, text) + strlen(text) + 1), &record);
  memset(&record, 'x', sizeof record);
}

static void verify_early_lines(void) {
  log_line("draimiofaf(1): a line before the history is initialized\n");
}

static uint32_t init_history(void) {
  return sdwrap_hist_init_for_uuid(service, SDWRAP_HIST_SIZE);
}

static void verify_history_init(void) {
  const uint32_t result = init_history();
  REQUIRE(result == 0, "sdwrap_hist_init_for_uuid returned 0x%X", result);
}

static void verify_lines(void) {
  char text[sizeof((sdwrap_hist_line_t *)NULL)->text];
  init_history();
  /* More lines than the history keeps. */
  for (unsigned round = 0; round < 2000; ++round) {
    const size_t size = 2 + (round * 37 + 509) % (sizeof text - 1);
    memset(text, 'a' + (int)(round % 26), size - 1);
    text[size - 1] = '\0';
    if (round % 2 == 0) text[size - 2] = '\n';
    log_line(text);
    if (round > 50 && round % 100 != 0) continue;
    const char *latest = platform_check_last_line();
    REQUIRE(latest != NULL && strcmp(latest, text) == 0,
            "a line of %zu characters is missing; the latest is '%s'", size - 1,
            latest != NULL ? latest : "");
  }
}

/* --- syserr.h --- */

static void verify_error_texts(void) {
  static const uint32_t codes[] = {
      0, 1, STP_MCEC_ERR_FAILURE, STP_MCEC_ERR_NO_MCEC_INFO, 0x7FFFFFFF, UINT32_MAX};
  for (size_t i = 0; i < sizeof codes / sizeof codes[0]; ++i) {
    const char *text = syserr2str(codes[i]);
    REQUIRE(text != NULL, "syserr2str returned NULL for 0x%X", codes[i]);
    for (const char *at = text; *at != '\0'; ++at) {
      REQUIRE((unsigned char)*at >= ' ', "the text for 0x%X is not printable", codes[i]);
    }
  }
}

const contract_t history_contracts[] = {
    {"sdwrap.early", "a line before the initialisation is accepted or ignored", verify_early_lines},
    {"sdwrap.init", "the initialisation of the history succeeds", verify_history_init},
    {"sdwrap.lines", "lines of up to 511 characters are copied before the call returns",
     verify_lines},
    {"syserr.text", "every code has a text", verify_error_texts},
    {NULL, NULL, NULL},
};
