/*
 * Event history: a file, mapped, so that the last lines of a process survive it.
 *
 *   0      4          8                         8 + size
 *   +------+----------+--------------------------+
 *   | next | is full  | lines, each with its NUL |
 *   +------+----------+--------------------------+
 *
 * The lines are a ring: the next one goes to `next`, over the oldest ones once the ring is full.
 * The lines of an earlier process are kept: they may show why it ended.
 */
#include <draimiofaf/platform/sdwrap.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform.h"

typedef struct ring {
  uint32_t next;
  uint32_t is_full;
  char lines[];
} ring_t;

enum { text_at = offsetof(sdwrap_hist_line_t, text) };

static ring_t *ring; /* NULL: not initialised */
static uint32_t ring_size;
static char ring_path[4096];

void platform_history_path(const char *path) {
  if (ring != NULL) munmap(ring, sizeof *ring + ring_size);
  ring = NULL;
  snprintf(ring_path, sizeof ring_path, "%s", path);
}

uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size) {
  (void)service_id;
  if (ring != NULL) return 0;
  const int file = open(ring_path, O_RDWR | O_CREAT | O_CLOEXEC, 0640);
  if (file < 0) return (uint32_t)errno;
  const off_t bytes = (off_t)(sizeof *ring + size);
  /* Memory for all of it now: a full disk is met here, not by a line. */
  int failure = ftruncate(file, bytes) != 0 ? errno : posix_fallocate(file, 0, bytes);
  if (failure == 0) {
    void *mapped = mmap(NULL, (size_t)bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped != MAP_FAILED) {
      ring = mapped;
      ring_size = size;
      if (ring->next >= size) platform_history_clear(); /* no history of ours */
    } else {
      failure = errno;
    }
  }
  close(file);
  return (uint32_t)failure;
}

/* Bytes of a line, fewer than the ring has: they may begin again at its start. */
static void append(const char *bytes, uint32_t count) {
  const uint32_t left = ring_size - ring->next;
  const uint32_t first = count < left ? count : left;
  memcpy(ring->lines + ring->next, bytes, first);
  memcpy(ring->lines, bytes + first, count - first);
  ring->next += count;
  if (ring->next < ring_size) return;
  ring->next -= ring_size;
  ring->is_full = 1;
}

uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record) {
  (void)service_id, (void)event, (void)a, (void)b;
  if (ring == NULL || length <= text_at || length - text_at >= ring_size) return 1;
  const char *line = (const char *)record + text_at;
  append(line, (uint32_t)strnlen(line, length - text_at - 1));
  append("", 1);
  return 0;
}

size_t platform_history_read(char *lines, size_t size) {
  if (ring == NULL) return 0;
  uint32_t at = ring->is_full != 0 ? ring->next : 0;
  uint32_t left = ring->is_full != 0 ? ring_size : ring->next;
  size_t written = 0;
  size_t whole = 0; /* of it, lines with their NUL */
  /* The oldest line of a full ring lost its beginning. */
  int is_cut = ring->is_full != 0;
  for (; left > 0 && written < size; --left, at = at + 1 < ring_size ? at + 1 : 0) {
    const char byte = ring->lines[at];
    if (!is_cut) lines[written++] = byte;
    if (byte != '\0') continue;
    is_cut = 0;
    whole = written;
  }
  return whole;
}

void platform_history_clear(void) {
  if (ring == NULL) return;
  ring->next = 0;
  ring->is_full = 0;
}
