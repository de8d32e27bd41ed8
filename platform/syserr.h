/*
 * Error texts.
 */
#ifndef DRAIMIOFAF_PLATFORM_SYSERR_H
#define DRAIMIOFAF_PLATFORM_SYSERR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns a printable text for a code of the platform or of the library; never NULL, also for an
 * unknown code. The text is valid at least until the next call. */
const char *syserr2str(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
