/* Event history: a ring buffer of lines in memory. */
#include <draimiofaf/platform/sdwrap.h>
#include <string.h>

#include "platform.h"

enum {
  text_at = offsetof(sdwrap_hist_line_t, text),
  line_size = sizeof(sdwrap_hist_line_t) - text_at,
  line_count = SDWRAP_HIST_SIZE / line_size,
};

static char lines[line_count][line_size];
static uint32_t logged;

uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size) {
  (void)service_id;
  return size <= sizeof lines ? 0 : 1;
}

uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record) {
  (void)service_id, (void)event, (void)a, (void)b;
  if (length <= text_at || length > sizeof(sdwrap_hist_line_t)) return 1;
  memcpy(lines[logged++ % line_count], (const char *)record + text_at, length - text_at);
  return 0;
}

uint32_t platform_history_count(void) {
  return logged;
}

const char *platform_history_line(uint32_t position) {
  return position < logged && logged - position <= line_count ? lines[position % line_count] : NULL;
}
