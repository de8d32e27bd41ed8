// The report: an array as records for display, each value of the switch logged beside the cached
// one.

#include <array>
#include <cstdio>
#include <cstring>

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

using ValueText = char[sizeof(mcecm_app_info_t::param_value)];

void show_flags(ValueText &text, uint32_t flags) {
  std::snprintf(text, sizeof text, "%s, %s, %s", port_type_text(flags),
                enabled_text((flags & STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER) != 0),
                enabled_text((flags & STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD) != 0));
}

void show_vlans(ValueText &text, const VlanSet &vlans) {
  if (count(vlans) == 0) {
    std::snprintf(text, sizeof text, "None");
  } else {
    std::snprintf(text, sizeof text, "VLANs %s", write_ranges(vlans));
  }
}

void show_text(ValueText &text, Bytes value) {
  const int length = text_length(value);
  if (length == 0) {
    std::snprintf(text, sizeof text, "\"\"");
  } else {
    std::snprintf(text, sizeof text, "%.*s", length, chars_of(value));
  }
}

void show(ValueText &text, const Parameter &parameter, Bytes value) {
  switch (parameter.form) {
    case Form::number:
      std::snprintf(text, sizeof text, "%d", word_of(value));
      break;
    case Form::choice:
      std::snprintf(text, sizeof text, "%s", choice_text(parameter, word_of(value)));
      break;
    case Form::flags:
      show_flags(text, word_of(value));
      break;
    case Form::text:
      show_text(text, value);
      break;
    case Form::vlans:
      show_vlans(text, vlans_of(value));
      break;
    case Form::map:
      break;
  }
}

using LoggedWord = std::array<char, 16>;

LoggedWord logged_word(const Parameter &parameter, Bytes value) {
  LoggedWord text;
  std::snprintf(text.data(), text.size(), parameter.form == Form::flags ? "0x%x" : "%d",
                word_of(value));
  return text;
}

void log_word(Step step, const Parameter &parameter, Bytes value) {
  const LoggedWord given = logged_word(parameter, value);
  if (parameter.scope == Scope::INTERFACE) {
    hist_log(step, "Type %s - val = %s\n", parameter.name, given.data());
    return;
  }
  const cache::Node *cached = cache::find(0, parameter.type);
  const LoggedWord cached_word =
      logged_word(parameter, cached != nullptr ? cache::value_of(*cached) : Bytes{});
  hist_log(step, "Type %s - val = %s, cval = %s\n", parameter.name, given.data(),
           cached != nullptr ? cached_word.data() : not_cached);
}

// A VLAN list or a name, with its length; -1: up to its NUL.
struct LongText {
  int length;
  const char *text;
};

LongText long_text(const Parameter &parameter, Bytes value) {
  if (parameter.form == Form::vlans) return {-1, write_ranges(vlans_of(value))};
  return {text_length(value), chars_of(value)};
}

// Long values take a line each, the second without a head.
void log_long(Step step, const Parameter &parameter, Bytes value) {
  const LongText given = long_text(parameter, value);
  hist_log(step, "Type %s - val = %.*s, ", parameter.name, given.length, given.text);
  const cache::Node *cached = cache::find(0, parameter.type);
  const LongText beside =
      cached != nullptr ? long_text(parameter, cache::value_of(*cached)) : LongText{-1, not_cached};
  hist_log("cval = %.*s\n", beside.length, beside.text);
}

void log_beside_cached(Step step, const Parameter &parameter, Bytes value) {
  if (is_word(parameter.form)) {
    log_word(step, parameter, value);
  } else if (parameter.form != Form::map) {
    log_long(step, parameter, value);
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
    std::snprintf(record.param_name, sizeof record.param_name, "%s", parameter->title);
    show(record.param_value, *parameter, tlv.value);
    log_beside_cached(here(), *parameter, tlv.value);
  }
  return walk.code;
}
