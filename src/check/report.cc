// The report: converts an array to records for display, and logs the values of the switch together
// with the cached ones.

#include <cstdio>
#include <cstring>
#include <string_view>

#include "cache/store.h"
#include "draimiofaf/check.h"
#include "foundation/bitmap.h"
#include "foundation/catalogue.h"
#include "foundation/runtime.h"

using namespace mcec;

namespace {

constexpr char not_cached[] = "Not Available";

using RecordText = char[sizeof(mcecm_app_info_t::param_value)];

// Texts are truncated to the size of the field.
void write_word(RecordText &text, const Parameter &parameter, uint32_t value) {
  if (parameter.kind == STP_MCEC_KIND_FLAGS) {
    std::snprintf(text, sizeof text, "%s, %s, %s", port_type_text(value),
                  enabled_text((value & STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER) != 0),
                  enabled_text((value & STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD) != 0));
  } else if (parameter.kind == STP_MCEC_KIND_CHOICE) {
    std::strncpy(text, choice_text(parameter, value), sizeof text - 1);
  } else {
    std::snprintf(text, sizeof text, "%d", static_cast<int32_t>(value));
  }
}

void log_word(Step step, const Parameter &parameter, uint32_t value) {
  const char *const name = parameter.name;
  const bool hex = parameter.kind == STP_MCEC_KIND_FLAGS;
  if (parameter.scope == Scope::INTERFACE) {
    hist_log(step, "Type %s - val = %d\n", name, value);
  } else if (const cache::Node *cached = cache::find(0, parameter.type); cached != nullptr) {
    hist_log(step, hex ? "Type %s - val = 0x%x, cval = 0x%x\n" : "Type %s - val = %d, cval = %d\n",
             name, value, word_of(cache::value_of(*cached)));
  } else {
    hist_log(step, hex ? "Type %s - val = 0x%x, cval = %s\n" : "Type %s - val = %d, cval = %s\n",
             name, value, not_cached);
  }
}

// Returns a name, or a list of VLANs, which is valid until the next list is written.
std::string_view display_text(const Parameter &parameter, Bytes value) {
  return parameter.kind == STP_MCEC_KIND_VLANS ? range_text(vlans_of(value)) : text_of(value);
}

void write_text(RecordText &text, const Parameter &parameter, std::string_view value) {
  const bool is_name = parameter.kind == STP_MCEC_KIND_TEXT;
  const char *const before = is_name || value.empty() ? "" : "VLANs ";
  if (value.empty()) value = is_name ? "\"\"" : "None";
  std::snprintf(text, sizeof text, "%s%.*s", before, static_cast<int>(value.size()), value.data());
}

// Logs both values, each in a line of its own; the second has no prefix.
void log_text(Step step, const Parameter &parameter, std::string_view value) {
  hist_log(step, "Type %s - val = %.*s, ", parameter.name, static_cast<int>(value.size()),
           value.data());
  const cache::Node *cached = cache::find(0, parameter.type);
  const std::string_view cached_text =
      cached != nullptr ? display_text(parameter, cache::value_of(*cached)) : not_cached;
  hist_log(no_prefix, "cval = %.*s\n", static_cast<int>(cached_text.size()), cached_text.data());
}

// Writes the text of a record, and logs the value with the cached one. A VLAN map has no text.
void write_value(Step step, RecordText &text, const Parameter &parameter, Bytes value) {
  if (is_word(parameter.kind)) {
    const uint32_t word = word_of(value);
    write_word(text, parameter, word);
    log_word(step, parameter, word);
  } else if (parameter.kind != STP_MCEC_KIND_MAP) {
    const std::string_view value_text = display_text(parameter, value);
    write_text(text, parameter, value_text);
    log_text(step, parameter, value_text);
  }
}

}  // namespace

extern "C" uint32_t stp_mcec_type1_cfg_get_param_info(void *param_array, void **param_info) {
  if (param_array == nullptr) return STP_MCEC_ERR_INVALID_ARG;
  Walk walk = walk_over(param_array);
  if (walk.count == 0) return STP_MCEC_ERR_INVALID_ARG;
  auto *report = static_cast<mcecm_app_info_report_t *>(zalloc_records(
      STP_MCEC_LIB_MEM_mcecm_app_info_t, sizeof(uint32_t), walk.count, sizeof(mcecm_app_info_t)));
  *param_info = report;
  if (report == nullptr) return STP_MCEC_RESULT_NO_BLOCK;
  report->count = walk.count;

  mcecm_app_info_t *next_record = report->records;
  for (Tlv tlv; next(walk, tlv);) {
    mcecm_app_info_t &record = *next_record++;
    record.app_code = STP_MCEC_APP_CODE;
    record.param_type = tlv.type;
    std::strcpy(record.component, "STP");
    const Parameter *parameter = find_parameter(tlv.type);
    if (parameter == nullptr) return STP_MCEC_ERR_INVALID_ARG;
    std::strncpy(record.param_name, parameter->title, sizeof record.param_name - 1);
    write_value(here(), record.param_value, *parameter, tlv.value);
  }
  return walk.code;
}
