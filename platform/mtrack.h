/*
 * Memory tracker: allocates blocks and accounts them to a service and a memory type.
 *
 * The library registers once when it is loaded, before it calls any other operation of the
 * platform: as STP_MCEC_LIB_SERVICE_ID (633), "STP MCEC Type-1 CFG LIB", with 21 memory types. It
 * unregisters when it is unloaded, after it has freed its last own block; blocks that it returned
 * to a process may still be live.
 *
 * The dynamic loader loads and unloads the library: mtrack_init and avl_create are called before
 * the static objects of an executable are constructed; avl_destroy, mtrack_free and mtrack_uninit
 * after they are destroyed. If the platform is part of the executable, the state of these functions
 * must be in objects without constructors and destructors.
 */
#ifndef DRAIMIOFAF_PLATFORM_MTRACK_H
#define DRAIMIOFAF_PLATFORM_MTRACK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Registers a service. mem_type_names: count names, of memory types 0 to count - 1. The array and
 * the texts stay valid until mtrack_uninit.
 */
void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count);

/* Unregisters a service. Live blocks stay valid. */
void mtrack_uninit(uint32_t service_id);

/*
 * Returns a block of size bytes, aligned for any object, with undefined content, or NULL if the
 * allocation fails. A size of 0 is allowed (a TLV may be empty) and returns a block that can be
 * freed, or NULL, which the library treats as a failure.
 */
void *mtrack_alloc(uint32_t service_id, uint32_t mem_type, uint32_t size);

/* Frees a block. The library never passes NULL, nor frees a block twice. */
void mtrack_free(void *block);

#ifdef __cplusplus
}
#endif

#endif
