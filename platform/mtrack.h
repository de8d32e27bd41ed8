/*
 * Memory tracker: blocks on account of a service and a memory type.
 *
 * The library registers once when it is loaded, before any other operation of the platform is
 * called for it: as STP_MCEC_LIB_SERVICE_ID (633), "STP MCEC Type-1 CFG LIB", with 21 memory types.
 * It unregisters when it is unloaded, after the last block of its own is released; blocks that it
 * handed to a process may outlive it.
 *
 * Loading and unloading are the loader's: mtrack_init and avl_create are called before the static
 * objects of an executable are constructed, avl_destroy, mtrack_free and mtrack_uninit after they
 * are destroyed. A platform that is part of the executable keeps what these need in objects without
 * constructors and destructors.
 */
#ifndef DRAIMIOFAF_PLATFORM_MTRACK_H
#define DRAIMIOFAF_PLATFORM_MTRACK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Register a service. mem_type_names: count names, of memory types 0 to count - 1. The library's
 * array and texts last until mtrack_uninit.
 */
void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count);

/* Unregister a service. Blocks that are still live stay valid. */
void mtrack_uninit(uint32_t service_id);

/*
 * A block of size bytes, aligned for any object, its content not set; NULL: none to be had. A size
 * of 0 is allowed (a TLV may be empty) and gives a block that can be released, or NULL, which the
 * library takes as a failure.
 */
void *mtrack_alloc(uint32_t service_id, uint32_t mem_type, uint32_t size);

/* Release a block. The library never passes NULL, nor a block twice. */
void mtrack_free(void *block);

#ifdef __cplusplus
}
#endif

#endif
