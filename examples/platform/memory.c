/*
 * Memory: blocks of a fixed arena, one behind the other from end to end, free or in use.
 *
 *   +--------+-----------------+--------+-------------+--
 *   | head   | bytes, up to a  | head   | bytes       | ...
 *   |        | multiple of 16  |        |             |
 *   +--------+-----------------+--------+-------------+--
 *
 * A block is found by a walk from the start, and free neighbours become one when a walk passes them.
 */
#include "memory.h"

#include <draimiofaf/platform/mtrack.h>
#include <stdio.h>
#include <stdlib.h>

#include "platform.h"

enum { arena_size = 2 * 1024 * 1024, unit_size = 16, max_services = 4 };
enum { nobody = 0 }; /* the service of a free block */

/* The unit of the arena, and the head of a block. */
typedef struct unit {
  uint32_t units; /* of the block, its head included */
  uint32_t size;  /* that was asked for */
  uint32_t service_id;
  uint32_t mem_type;
} unit_t;

_Static_assert(sizeof(unit_t) == unit_size, "blocks start at multiples of the unit");

enum { arena_units = arena_size / unit_size };

static _Alignas(unit_size) unit_t arena[arena_units];
static unit_t *const arena_end = arena + arena_units;

typedef struct service {
  uint32_t id;
  const char *const *mem_type_names; /* NULL: a free place */
  uint32_t mem_types;
} service_t;

static service_t services[max_services];

static unit_t *first_block(void) {
  if (arena->units == 0) arena->units = arena_units;
  return arena;
}

/* The block in use whose bytes an address lies in; NULL: none. */
static unit_t *block_of(const void *at) {
  const uintptr_t address = (uintptr_t)at;
  if (address < (uintptr_t)arena || address >= (uintptr_t)arena_end) return NULL;
  for (unit_t *block = first_block(); block < arena_end; block += block->units) {
    if (address >= (uintptr_t)(block + block->units)) continue;
    const int is_within = address >= (uintptr_t)(block + 1);
    return is_within && block->service_id != nobody ? block : NULL;
  }
  return NULL;
}

void *memory_get(uint32_t service_id, uint32_t mem_type, uint32_t size) {
  if (size > arena_size - unit_size) return NULL;
  /* A block of no bytes has a unit too: its address lies in no other block. */
  const uint32_t units = 1 + (size > 0 ? (size + unit_size - 1) / unit_size : 1);
  for (unit_t *block = first_block(); block < arena_end; block += block->units) {
    if (block->service_id != nobody) continue;
    for (unit_t *next = block + block->units; next < arena_end && next->service_id == nobody;
         next = block + block->units) {
      block->units += next->units;
    }
    if (block->units < units) continue;
    if (block->units > units) block[units] = (unit_t){.units = block->units - units};
    *block = (unit_t){units, size, service_id, mem_type};
    return block + 1;
  }
  return NULL;
}

void memory_give_back(void *at) {
  unit_t *block = block_of(at);
  if (block == NULL || at != block + 1) {
    fprintf(stderr, "platform: %p is no live block\n", at);
    abort();
  }
  block->service_id = nobody;
}

size_t platform_bytes_from(const void *at) {
  const unit_t *block = block_of(at);
  if (block == NULL) return SIZE_MAX;
  const size_t into = (size_t)((const unsigned char *)at - (const unsigned char *)(block + 1));
  return into <= block->size ? block->size - into : 0;
}

int platform_block(const void *at, uint32_t *mem_type, uint32_t *size) {
  const unit_t *block = block_of(at);
  if (block == NULL || at != block + 1) return 0;
  *mem_type = block->mem_type;
  *size = block->size;
  return 1;
}

platform_usage_t platform_memory(uint32_t service_id, uint32_t mem_type) {
  platform_usage_t usage = {0, 0};
  for (const unit_t *block = first_block(); block < arena_end; block += block->units) {
    if (block->service_id != service_id || block->mem_type != mem_type) continue;
    ++usage.blocks;
    usage.bytes += block->size;
  }
  return usage;
}

static service_t *service_of(uint32_t id) {
  for (service_t *service = services; service < services + max_services; ++service) {
    if (service->mem_type_names != NULL && service->id == id) return service;
  }
  return NULL;
}

const char *platform_mem_type_name(uint32_t service_id, uint32_t mem_type) {
  const service_t *service = service_of(service_id);
  return service != NULL && mem_type < service->mem_types ? service->mem_type_names[mem_type]
                                                          : NULL;
}

void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count) {
  service_t *service = services;
  while (service < services + max_services && service->mem_type_names != NULL) ++service;
  if (service == services + max_services || service_id == nobody ||
      service_of(service_id) != NULL) {
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
  return platform_mem_type_name(service_id, mem_type) != NULL
             ? memory_get(service_id, mem_type, size)
             : NULL;
}

void mtrack_free(void *block) {
  memory_give_back(block);
}
