/*
 * Error strings.
 */
#ifndef DRAIMIOFAF_PLATFORM_SYSERR_H
#define DRAIMIOFAF_PLATFORM_SYSERR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A printable text for a code of the platform or of the library; never NULL, also for a code that
 * is not known. It lasts at least until the next call. */
const char *syserr2str(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
