/*
 * The version of the headers, MAJOR.MINOR.PATCH. docs/abi.md lists which changes increment which
 * part.
 */
#ifndef DRAIMIOFAF_VERSION_H
#define DRAIMIOFAF_VERSION_H

/* Incremented by an incompatible change of the binary interface. */
#define DRAIMIOFAF_VERSION_MAJOR 1
/* Incremented by an addition. */
#define DRAIMIOFAF_VERSION_MINOR 0
/* Incremented by a correction. */
#define DRAIMIOFAF_VERSION_PATCH 0

/* For comparisons in the preprocessor: 10203 is 1.2.3. */
#define DRAIMIOFAF_VERSION \
  (DRAIMIOFAF_VERSION_MAJOR * 10000 + DRAIMIOFAF_VERSION_MINOR * 100 + DRAIMIOFAF_VERSION_PATCH)

#endif
