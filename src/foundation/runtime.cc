#include "foundation/runtime.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "draimiofaf/foundation.h"
#include "mcecm.h"
#include "sdwrap.h"
#include "syserr.h"
#include "sysmgr.h"

namespace mcec {
namespace {

struct MemType {
  uint32_t number;
  const char *name;
};

constexpr MemType mem_types[] = {
#define MCEC_ROW(name, number) {number, "STP_MCEC_LIB_MEM_" #name},
    STP_MCEC_LIB_MEM_TYPES(MCEC_ROW)
#undef MCEC_ROW
};

constexpr char debug_path[] = "/zarn/tmp/stp_mcec_lib_dbg.log";
constexpr char debug_banner[] =
    "STP MCEC Type-1 cfg debug file \n"
    "--------------------------------\n";

// A line under way, the record that the event history is handed, and its length so far.
struct Line {
  sdwrap_hist_line_t record;
  std::size_t length = 0;
};

// "stp_mcec_type1_cfg_compat_check(21): "; the names of operations are far shorter than a line.
void begin(Line &line, Step step) {
  char *const text = line.record.text;
  char *out = std::copy_n(step.operation, std::strlen(step.operation), text);
  *out++ = '(';
  out = std::to_chars(out, std::end(line.record.text), step.line).ptr;
  out = std::copy_n("): ", 3, out);
  line.length = static_cast<std::size_t>(out - text);
}

void append(Line &line, std::string_view text) {
  const std::size_t fits = std::min(text.size(), sizeof line.record.text - 1 - line.length);
  std::copy_n(text.data(), fits, line.record.text + line.length);
  line.length += fits;
}

void append(Line &line, std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) append(line, text);
}

// Most formats are texts with nothing to fill in.
void append(Line &line, const char *format, va_list arguments) {
  if (std::strchr(format, '%') == nullptr) return append(line, format);
  const std::size_t room = sizeof line.record.text - line.length;
  const int written = std::vsnprintf(line.record.text + line.length, room, format, arguments);
  line.length += std::min(static_cast<std::size_t>(std::max(written, 0)), room - 1);
}

void send(Line &line) {
  if (stp_mcec_lib_sdwrap_init_done == 0) stp_mcec_lib_sdwrap_init();
  line.record.flag = 1;
  line.record.text[line.length] = '\0';
  const std::size_t size = offsetof(sdwrap_hist_line_t, text) + line.length + 1;
  sdwrap_his_log_event_for_uuid_inst(STP_MCEC_LIB_SERVICE_ID, SDWRAP_HIST_LINE_EVENT, 0, 0,
                                     static_cast<uint32_t>(size), &line.record);
}

}  // namespace

void *zalloc(stp_mcec_lib_mem_type_t mem_type, uint32_t size) {
  void *block = mtrack_alloc(STP_MCEC_LIB_SERVICE_ID, mem_type, size);
  if (block != nullptr) std::memset(block, 0, size);
  return block;
}

void *zalloc_records(stp_mcec_lib_mem_type_t mem_type, uint32_t header, uint32_t count,
                     uint32_t record_size) {
  const uint64_t size = header + uint64_t{count} * record_size;
  return size <= UINT32_MAX ? zalloc(mem_type, static_cast<uint32_t>(size)) : nullptr;
}

void hist_log(Step step, const char *format, ...) {
  Line line;
  begin(line, step);
  va_list arguments;
  va_start(arguments, format);
  append(line, format, arguments);
  va_end(arguments);
  send(line);
}

void hist_log(Step step, std::initializer_list<std::string_view> texts) {
  Line line;
  begin(line, step);
  append(line, texts);
  send(line);
}

void hist_log(const char *format, ...) {
  Line line;
  va_list arguments;
  va_start(arguments, format);
  append(line, format, arguments);
  va_end(arguments);
  send(line);
}

void hist_log(std::initializer_list<std::string_view> texts) {
  Line line;
  append(line, texts);
  send(line);
}

uint32_t tlv_find(const void *array, uint16_t type, Tlv &found) {
  uint16_t length = 0;
  void *value = nullptr;
  const uint32_t code = tlv_aligned_array_find_tlv(array, type, &length, &value, TLV_ALIGNED_FLAG);
  if (code == 0) found = {type, {static_cast<const uint8_t *>(value), length}};
  return code;
}

bool next(Walk &walk, Tlv &tlv) {
  if (walk.read == walk.count) return false;
  ++walk.read;
  uint16_t type = 0;
  uint16_t length = 0;
  void *value = nullptr;
  walk.code = tlv_aligned_array_get_next_tlv(walk.array, &type, &length, &value, TLV_ALIGNED_FLAG,
                                             &walk.cursor);
  if (walk.code != 0) return false;
  tlv = {type, {static_cast<const uint8_t *>(value), length}};
  return true;
}

uint32_t log_unstored(Step step, uint32_t code) {
  hist_log(step, "Failed (rc=0x%x, %s) to retrieve tlv\n", code, syserr2str(code));
  return code;
}

}  // namespace mcec

using namespace mcec;

int stp_mcec_lib_sdwrap_init_done = 0;
FILE *stp_mcec_lib_debug_file = nullptr;

extern "C" const char *__stp_mcec_lib_mem_type_t_find(uint32_t type) {
  for (const MemType &row : mem_types) {
    if (row.number == type) return row.name;
  }
  return nullptr;
}

extern "C" uint32_t __stp_mcec_lib_mem_type_t_str2enum(const char *name) {
  for (const MemType &row : mem_types) {
    if (strcasecmp(row.name, name) == 0) return row.number;
  }
  return STP_MCEC_LIB_MEM_NONE;
}

extern "C" void stp_mcec_lib_sdwrap_init() {
  if (sdwrap_hist_init_for_uuid(STP_MCEC_LIB_SERVICE_ID, SDWRAP_HIST_SIZE) == 0) {
    stp_mcec_lib_sdwrap_init_done = 1;
  }
}

extern "C" void stp_mcec_lib_debug_print(uint32_t, const char *format, ...) {
  if (stp_mcec_lib_debug_file == nullptr) {
    char path[128];
    std::snprintf(path, sizeof path, "%s.%u", debug_path, sysmgr_slc_get() & 0xFFFF);
    stp_mcec_lib_debug_file = std::fopen(path, "a");
    if (stp_mcec_lib_debug_file == nullptr) return;
    std::fputs(debug_banner, stp_mcec_lib_debug_file);
  }
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stp_mcec_lib_debug_file, format, arguments);
  va_end(arguments);
  std::fflush(stp_mcec_lib_debug_file);
}

extern "C" uint32_t stp_mcec_lib_get_mcec_id(uint32_t if_index, uint32_t *mcec_id) {
  alignas(8) uint8_t key[MCECM_SDB_KEY_SIZE] = {};
  mcecm_sdb_generate_if_key(if_index, key);
  const void *record = mcecm_sdb_info_get(key);
  if (record == nullptr || load<uint32_t>(record) == 0) return STP_MCEC_ERR_NO_MCEC_INFO;
  *mcec_id = load<uint32_t>(static_cast<const uint8_t *>(record) + sizeof(uint32_t));
  return 0;
}

extern "C" uint32_t stp_mcec_lib_mct_exists() {
  alignas(8) uint8_t key[MCECM_SDB_KEY_SIZE] = {};
  mcecm_sdb_generate_mct_key(1, key);
  return mcecm_sdb_info_get(key) != nullptr ? 1 : 0;
}
