#include "sdwrap.h"

#include <cstring>
#include <string>
#include <vector>

#include "state.h"

namespace {

std::vector<std::string> lines;

constexpr std::size_t text_offset = sizeof(uint32_t);

}  // namespace

namespace standin {

void reset_history() {
  lines.clear();
}

}  // namespace standin

uint32_t sdwrap_hist_init_for_uuid(uint32_t, uint32_t) {
  return standin::fails(STANDIN_HISTORY_INIT) ? 1 : 0;
}

uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t length,
                                            const void *record) {
  const char *text = static_cast<const char *>(record) + text_offset;
  if (length <= text_offset || strnlen(text, length - text_offset) != length - text_offset - 1) {
    standin::misuse("a history record of %u bytes does not end with its line", length);
    return 1;
  }
  lines.emplace_back(text);
  return 0;
}

uint32_t standin_history_count() {
  return static_cast<uint32_t>(lines.size());
}

const char *standin_history_line(uint32_t position) {
  return position < lines.size() ? lines[position].c_str() : nullptr;
}

void standin_history_clear() {
  lines.clear();
}
