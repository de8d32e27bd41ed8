#include <cstring>
#include <string>
#include <vector>

#include "internal.h"
#include "sdwrap.h"

namespace {

std::vector<std::string> lines;

void (*listener)(const char *) = nullptr;

constexpr std::size_t text_offset = offsetof(sdwrap_hist_line_t, text);

}  // namespace

uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size) {
  if (standin_service_name(service_id) == nullptr || size != SDWRAP_HIST_SIZE) {
    standin::misuse("a history of %u bytes for service %u", size, service_id);
    return 1;
  }
  return standin::fails(STANDIN_HISTORY_INIT) ? 1 : 0;
}

uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record) {
  if (standin_service_name(service_id) == nullptr || event != SDWRAP_HIST_LINE_EVENT || a != 0 ||
      b != 0) {
    standin::misuse("service %u logs event 0x%x, %u, %u", service_id, event, a, b);
    return 1;
  }
  uint32_t flag = 0;
  std::memcpy(&flag, record, sizeof flag);
  if (flag != 1) standin::misuse("the flag of a history record is %u; expected 1", flag);
  const char *text = static_cast<const char *>(record) + text_offset;
  if (length <= text_offset || length > sizeof(sdwrap_hist_line_t) ||
      strnlen(text, length - text_offset) != length - text_offset - 1) {
    standin::misuse("a history record of %u bytes does not end with its line", length);
    return 1;
  }
  lines.emplace_back(text);
  if (listener != nullptr) listener(text);
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

void standin_on_history(void (*new_listener)(const char *)) {
  listener = new_listener;
}
