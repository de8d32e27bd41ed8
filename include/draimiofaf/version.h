/*
 * The version of the headers, MAJOR.MINOR.PATCH; docs/abi.md lists what changes with which part.
 */
#ifndef DRAIMIOFAF_VERSION_H
#define DRAIMIOFAF_VERSION_H

/* Changes with the binary interface. */
#define DRAIMIOFAF_VERSION_MAJOR 1
/* Changes with an addition. */
#define DRAIMIOFAF_VERSION_MINOR 0
/* Changes with a correction. */
#define DRAIMIOFAF_VERSION_PATCH 0

/* For comparisons in the preprocessor: 10203 is 1.2.3. */
#define DRAIMIOFAF_VERSION \
  (DRAIMIOFAF_VERSION_MAJOR * 10000 + DRAIMIOFAF_VERSION_MINOR * 100 + DRAIMIOFAF_VERSION_PATCH)

#endif
