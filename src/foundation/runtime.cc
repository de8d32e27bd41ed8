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

constexpr char debug_path[] = "/zarn/tmp/stp_mcec_lib_dbg.log";
constexpr char debug_banner[] =
    "STP MCEC Type-1 cfg debug file \n--------------------------------\n";

// Writes "stp_mcec_type1_cfg_compat_check(21): " and returns its end; names of operations are far
// shorter than a line. With snprintf a check takes 1.6 times as long.
char *write_prefix(sdwrap_hist_line_t &line, Step step) {
  char *out = std::copy_n(step.operation, std::strlen(step.operation), line.text);
  *out++ = '(';
  out = std::to_chars(out, std::end(line.text), step.line).ptr;
  return std::copy_n("): ", 3, out);
}

void init_history() {
  if (sdwrap_hist_init_for_uuid(STP_MCEC_LIB_SERVICE_ID, SDWRAP_HIST_SIZE) == 0) {
    stp_mcec_lib_sdwrap_init_done = 1;
  }
}

}  // namespace

const char *const mem_type_names[] = {
#define MCEC_ROW(name, number) "STP_MCEC_LIB_MEM_" #name,
    STP_MCEC_LIB_MEM_TYPES(MCEC_ROW)
#undef MCEC_ROW
};

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
  if (stp_mcec_lib_sdwrap_init_done == 0) init_history();
  sdwrap_hist_line_t line;
  line.flag = 1;
  char *text = step.operation != nullptr ? write_prefix(line, step) : line.text;
  va_list arguments;
  va_start(arguments, format);
  const auto room = std::end(line.text) - text;
  text += std::min<std::ptrdiff_t>(
      std::vsnprintf(text, static_cast<std::size_t>(room), format, arguments), room - 1);
  va_end(arguments);
  const auto size = text + 1 - reinterpret_cast<const char *>(&line);
  sdwrap_his_log_event_for_uuid_inst(STP_MCEC_LIB_SERVICE_ID, SDWRAP_HIST_LINE_EVENT, 0, 0,
                                     static_cast<uint32_t>(size), &line);
}

uint32_t log_failure(Step step, const char *format, uint32_t code) {
  hist_log(step, format, code, syserr2str(code));
  return code;
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

uint32_t find_channel(uint32_t if_index, uint32_t &channel) {
  alignas(8) uint8_t key[MCECM_SDB_KEY_SIZE] = {};
  mcecm_sdb_generate_if_key(if_index, key);
  const void *record = mcecm_sdb_info_get(key);
  if (record == nullptr || load<uint32_t>(record) == 0) return STP_MCEC_ERR_NO_MCEC_INFO;
  channel = load<uint32_t>(static_cast<const uint8_t *>(record) + sizeof(uint32_t));
  return 0;
}

bool has_trunk() {
  alignas(8) uint8_t key[MCECM_SDB_KEY_SIZE] = {};
  mcecm_sdb_generate_mct_key(1, key);
  return mcecm_sdb_info_get(key) != nullptr;
}

}  // namespace mcec

using namespace mcec;

int stp_mcec_lib_sdwrap_init_done = 0;
FILE *stp_mcec_lib_debug_file = nullptr;

extern "C" const char *__stp_mcec_lib_mem_type_t_find(uint32_t type) {
  return type < std::size(mem_type_names) ? mem_type_names[type] : nullptr;
}

extern "C" uint32_t __stp_mcec_lib_mem_type_t_str2enum(const char *name) {
  for (uint32_t type = 0; type < std::size(mem_type_names); ++type) {
    if (strcasecmp(mem_type_names[type], name) == 0) return type;
  }
  return STP_MCEC_LIB_MEM_NONE;
}

extern "C" void stp_mcec_lib_sdwrap_init() {
  init_history();
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
  return find_channel(if_index, *mcec_id);
}

extern "C" uint32_t stp_mcec_lib_mct_exists() {
  return has_trunk() ? 1 : 0;
}
