/*
 * Event history: the diagnostic log lines of a service.
 */
#ifndef DRAIMIOFAF_PLATFORM_SDWRAP_H
#define DRAIMIOFAF_PLATFORM_SDWRAP_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

enum {
  SDWRAP_HIST_SIZE = 0x40000,       /* bytes of history that the library requests */
  SDWRAP_HIST_LINE_EVENT = 0x730000 /* the event of these records */
};

/* The record of a line. Only the bytes of text up to and including the NUL are passed. */
typedef struct sdwrap_hist_line {
  uint32_t flag; /* 1 */
  char text[512];
} sdwrap_hist_line_t;

static_assert(sizeof(sdwrap_hist_line_t) == 516, "sdwrap_hist_line_t");
static_assert(offsetof(sdwrap_hist_line_t, text) == 4, "sdwrap_hist_line_t");

#ifdef __cplusplus
extern "C" {
#endif

/* Initialises the history of a service; size: bytes to keep, SDWRAP_HIST_SIZE. Returns 0 on
 * success. On any other result the library tries again at its next line. */
uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size);

/*
 * Appends a record. The library passes SDWRAP_HIST_LINE_EVENT, 0 for a and b, and an
 * sdwrap_hist_line_t; length is the number of its bytes up to and including the NUL of the line, at
 * most 516. Most lines end in a line feed; a line without one was truncated, or continues in the
 * next line. The function copies or writes the record before it returns. The library calls it also
 * if the initialisation failed. The result is ignored.
 */
uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record);

#ifdef __cplusplus
}
#endif

#endif
