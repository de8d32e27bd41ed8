/* Blocks of the arena for the platform itself; those of mtrack.h are made of them too. */
#ifndef EXAMPLE_PLATFORM_MEMORY_H
#define EXAMPLE_PLATFORM_MEMORY_H

#include <stdint.h>

/* The service of the platform's own blocks. */
enum { platform_service = 1 };

/* A block, its content not set; NULL: none to be had. */
void *memory_get(uint32_t service_id, uint32_t mem_type, uint32_t size);

/* A live block; anything else ends the process. */
void memory_give_back(void *block);

#endif
