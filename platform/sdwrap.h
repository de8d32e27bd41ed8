/*
 * Event history: the diagnostic lines of a service, for whoever looks into a fault.
 */
#ifndef DRAIMIOFAF_PLATFORM_SDWRAP_H
#define DRAIMIOFAF_PLATFORM_SDWRAP_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

enum {
  SDWRAP_HIST_SIZE = 0x40000,       /* bytes of history that the library asks for */
  SDWRAP_HIST_LINE_EVENT = 0x730000 /* the event of its records */
};

/* The record of a line. Of the text only the line and its NUL are handed over. */
typedef struct sdwrap_hist_line {
  uint32_t flag; /* 1 */
  char text[512];
} sdwrap_hist_line_t;

static_assert(sizeof(sdwrap_hist_line_t) == 516, "sdwrap_hist_line_t");
static_assert(offsetof(sdwrap_hist_line_t, text) == 4, "sdwrap_hist_line_t");

#ifdef __cplusplus
extern "C" {
#endif

/* Prepare the history of a service; size: bytes to keep, SDWRAP_HIST_SIZE. 0: initialised. On any
 * other result the library tries again with its next line. */
uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size);

/*
 * Append one record. The library passes SDWRAP_HIST_LINE_EVENT, a and b 0, and an
 * sdwrap_hist_line_t; length counts its bytes up to the NUL of the line, at most 516. The line
 * mostly ends in a line feed; one without was cut, or is continued by the next. The record is
 * copied or written before the call returns. It is called also when the initialisation failed. The
 * result is not looked at.
 */
uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record);

#ifdef __cplusplus
}
#endif

#endif
