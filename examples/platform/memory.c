/*
 * Memory: blocks of malloc, each behind a head that says whose it is, in a list of all that live.
 *
 *   +------------+------------------+--------------------+--
 *   | neighbours | size, mark       | bytes, aligned     |
 *   | (16)       | service, type    | for any object     |
 *   +------------+------------------+--------------------+--
 */
#include <draimiofaf/platform/mtrack.h>
#include <stdio.h>
#include <stdlib.h>

#include "platform.h"

enum { max_services = 4, live_mark = 0x4C495645 };

typedef struct block {
  _Alignas(16) struct block *next;
  struct block *previous;
  uint32_t size;
  uint32_t mark; /* live_mark, until it is released */
  uint32_t service_id;
  uint32_t mem_type;
} block_t;

_Static_assert(sizeof(block_t) % 16 == 0, "the bytes behind a head are aligned");

static block_t *first_block;

typedef struct service {
  uint32_t id;
  const char *const *mem_type_names; /* NULL: a free place */
  uint32_t mem_types;
} service_t;

static service_t services[max_services];

static service_t *service_of(uint32_t id) {
  for (service_t *service = services; service < services + max_services; ++service) {
    if (service->mem_type_names != NULL && service->id == id) return service;
  }
  return NULL;
}

void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count) {
  service_t *service = services;
  while (service < services + max_services && service->mem_type_names != NULL) ++service;
  if (service == services + max_services || service_of(service_id) != NULL) {
    fprintf(stderr, "platform: %s cannot be service %u\n", lib_name, service_id);
    abort();
  }
  *service = (service_t){service_id, mem_type_names, count};
}

void mtrack_uninit(uint32_t service_id) {
  service_t *service = service_of(service_id);
  if (service != NULL) service->mem_type_names = NULL;
}

void *mtrack_alloc(uint32_t service_id, uint32_t mem_type, uint32_t size) {
  if (platform_mem_type_name(service_id, mem_type) == NULL) return NULL;
  block_t *block = malloc(sizeof *block + size);
  if (block == NULL) return NULL;
  *block = (block_t){.next = first_block,
                     .size = size,
                     .mark = live_mark,
                     .service_id = service_id,
                     .mem_type = mem_type};
  if (first_block != NULL) first_block->previous = block;
  first_block = block;
  return block + 1;
}

void mtrack_free(void *at) {
  block_t *block = (block_t *)at - 1;
  if (block->mark != live_mark) {
    fprintf(stderr, "platform: %p is no live block\n", at);
    abort();
  }
  block->mark = 0;
  if (block->next != NULL) block->next->previous = block->previous;
  if (block->previous != NULL) block->previous->next = block->next;
  if (first_block == block) first_block = block->next;
  free(block);
}

const char *platform_mem_type_name(uint32_t service_id, uint32_t mem_type) {
  const service_t *service = service_of(service_id);
  return service != NULL && mem_type < service->mem_types ? service->mem_type_names[mem_type]
                                                          : NULL;
}

platform_usage_t platform_memory(uint32_t service_id, uint32_t mem_type) {
  platform_usage_t usage = {0, 0};
  for (const block_t *block = first_block; block != NULL; block = block->next) {
    if (block->service_id != service_id || block->mem_type != mem_type) continue;
    ++usage.blocks;
    usage.bytes += block->size;
  }
  return usage;
}

void platform_block(const void *at, uint32_t *mem_type, uint32_t *size) {
  const block_t *block = (const block_t *)at - 1;
  *mem_type = block->mem_type;
  *size = block->size;
}
