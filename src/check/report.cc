// The report: an array as records for display, each value of the switch logged beside the cached
// one.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "cache/store.h"
#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "foundation/bitmap.h"
#include "foundation/catalogue.h"
#include "foundation/runtime.h"

using namespace mcec;

namespace {

constexpr char component[] = "STP";
constexpr char not_cached[] = "Not Available";

using RecordText = char[sizeof(mcecm_app_info_t::param_value)];

// Append to a text of `length` characters in a record that is still zero; how many it has then.
std::size_t append(RecordText &text, std::size_t length, std::string_view more) {
  const std::size_t fits = std::min(more.size(), sizeof text - 1 - length);
  std::copy_n(more.data(), fits, text + length);
  return length + fits;
}

// --- values that are words ---

void show_flags(RecordText &text, uint32_t flags) {
  std::size_t length = append(text, 0, port_type_text(flags));
  for (const uint32_t flag :
       {STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER, STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD}) {
    length = append(text, length, ", ");
    length = append(text, length, enabled_text((flags & flag) != 0));
  }
}

void show_word(RecordText &text, const Parameter &parameter, uint32_t value) {
  if (parameter.form == Form::flags) {
    show_flags(text, value);
  } else if (parameter.form == Form::choice) {
    append(text, 0, choice_text(parameter, value));
  } else {
    std::to_chars(text, std::end(text), static_cast<int32_t>(value));
  }
}

void log_word(Step step, const Parameter &parameter, uint32_t value) {
  const char *const name = parameter.name;
  const bool hex = parameter.form == Form::flags;
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

// --- values that are texts ---

// A name as it stands, or a list of VLANs, which lasts until the next one is written.
std::string_view text_of(const Parameter &parameter, Bytes value) {
  if (parameter.form == Form::vlans) return range_text(vlans_of(value));
  return {chars_of(value), static_cast<std::size_t>(text_length(value))};
}

void show_text(RecordText &text, const Parameter &parameter, std::string_view value) {
  if (parameter.form == Form::vlans) {
    const std::size_t length = append(text, 0, value.empty() ? "None" : "VLANs ");
    append(text, length, value);
  } else {
    append(text, 0, value.empty() ? "\"\"" : value);
  }
}

// They take a line each, the second without a head.
void log_text(Step step, const Parameter &parameter, std::string_view value) {
  hist_log(step, {"Type ", parameter.name, " - val = ", value, ", "});
  const cache::Node *cached = cache::find(0, parameter.type);
  const std::string_view beside =
      cached != nullptr ? text_of(parameter, cache::value_of(*cached)) : not_cached;
  hist_log({"cval = ", beside, "\n"});
}

// The record's texts, and the value beside the cached one in the log. A VLAN map has no text.
void tell(Step step, RecordText &text, const Parameter &parameter, Bytes value) {
  if (is_word(parameter.form)) {
    const uint32_t word = word_of(value);
    show_word(text, parameter, word);
    log_word(step, parameter, word);
  } else if (parameter.form != Form::map) {
    const std::string_view given = text_of(parameter, value);
    show_text(text, parameter, given);
    log_text(step, parameter, given);
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

  mcecm_app_info_t *free_record = report->records;
  for (Tlv tlv; next(walk, tlv);) {
    mcecm_app_info_t &record = *free_record++;
    record.app_code = STP_MCEC_APP_CODE;
    record.param_type = tlv.type;
    std::memcpy(record.component, component, sizeof component);
    const Parameter *parameter = find_parameter(tlv.type);
    if (parameter == nullptr) return STP_MCEC_ERR_INVALID_ARG;
    append(record.param_name, 0, parameter->title);
    tell(here(), record.param_value, *parameter, tlv.value);
  }
  return walk.code;
}
