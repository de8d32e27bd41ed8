/*
 * System manager.
 */
#ifndef DRAIMIOFAF_PLATFORM_SYSMGR_H
#define DRAIMIOFAF_PLATFORM_SYSMGR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the number of the partition in which the process runs; only the low 16 bits are used. */
uint32_t sysmgr_slc_get(void);

#ifdef __cplusplus
}
#endif

#endif
