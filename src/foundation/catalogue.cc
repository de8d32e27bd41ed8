#include "foundation/catalogue.h"

#include <algorithm>
#include <cstring>

#include "draimiofaf/foundation.h"
#include "foundation/bitmap.h"

namespace mcec {
namespace {

constexpr char enabled[] = "Enabled";
constexpr char disabled[] = "Disabled";

constexpr Choices::Text modes[] = {{STP_MCEC_STP_MODE_RAPID_PVST, "Rapid-PVST"}};
constexpr Choices::Text switches[] = {{0, disabled}};
constexpr Choices::Text port_types[] = {{STP_MCEC_IFI_PORT_TYPE_EDGE, "Edge Port"},
                                        {STP_MCEC_IFI_PORT_TYPE_NORMAL, "Normal Port"},
                                        {STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK, "Edge Trunk Port"},
                                        {STP_MCEC_IFI_PORT_TYPE_NETWORK, "Network Port"}};
constexpr Choices::Text guards[] = {{STP_MCEC_IFI_PORT_GUARD_ROOT, "Root"},
                                    {STP_MCEC_IFI_PORT_GUARD_LOOP, "Loop"}};
constexpr Choices::Text simulations[] = {
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT, "Default"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_ENABLED, enabled},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DISABLED, disabled},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_ENABLED, "Default Enabled"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_DISABLED, "Default Disabled"}};

constexpr Choices choices[] = {
    {.type = STP_MCEC_TYPE1_STP_MODE, .texts = modes, .other = "MST"},
    {.type = STP_MCEC_TYPE1_LOOP_GUARD, .texts = switches, .other = enabled},
    {.type = STP_MCEC_TYPE1_BRIDGE_ASSURANCE, .texts = switches, .other = enabled},
    {.type = STP_MCEC_TYPE1_GBL_MST_SIMULATE_PVST, .texts = switches, .other = enabled},
    {.type = STP_MCEC_TYPE1_IFI_PORT_TYPE, .texts = port_types, .other = "Default"},
    {.type = STP_MCEC_TYPE1_IFI_PORT_GUARD, .texts = guards, .other = "None"},
    {.type = STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST, .texts = simulations, .other = "None"},
};

constexpr const Choices *find_choices(uint16_t type) {
  const auto *found = std::ranges::find(choices, type, &Choices::type);
  return found != std::end(choices) ? found : nullptr;
}

// A parameter without names is a compile error.
#define MCEC_NAMES(id, name, title, ...) constexpr const char *names_##id[] = {name, title};
STP_MCEC_TYPE1_NAMES(MCEC_NAMES)
#undef MCEC_NAMES

constexpr Parameter catalogue[] = {
#define MCEC_ROW(ID, TYPE, SCOPE, LENGTH, CODE, KIND, DEFAULT, MODES, POD)        \
  {.type = (TYPE),                                                                \
   .scope = Scope::SCOPE,                                                         \
   .length = (LENGTH),                                                            \
   .mismatch = (CODE),                                                            \
   .kind = STP_MCEC_KIND_##KIND,                                                  \
   .default_word = (DEFAULT),                                                     \
   .compared = STP_MCEC_COMPARED_##MODES,                                         \
   .is_compared_on_pod = STP_MCEC_COMPARED_##POD != STP_MCEC_COMPARED_NOT_ON_POD, \
   .name = names_##ID[0],                                                         \
   .title = names_##ID[1],                                                        \
   .choices = find_choices(TYPE)},
    STP_MCEC_TYPE1_PARAMETERS(MCEC_ROW)
#undef MCEC_ROW
};

// The catalogue is sorted by type, and so by scope.
constexpr auto global_count =
    static_cast<std::size_t>(std::ranges::count(catalogue, Scope::GLOBAL, &Parameter::scope));

constexpr uint32_t results[] = {
#define MCEC_ROW(code, text) code,
    STP_MCEC_RESULTS(MCEC_ROW)
#undef MCEC_ROW
};

// Checks that every table has a row for the parameter.
constexpr bool is_complete(const Parameter &parameter) {
  const auto position = static_cast<std::size_t>(&parameter - catalogue);
  return parameter.type == position + 1 &&
         (parameter.scope == Scope::GLOBAL) == (position < global_count) &&
         (parameter.kind == STP_MCEC_KIND_CHOICE) == (parameter.choices != nullptr) &&
         std::ranges::count(results, parameter.mismatch) == 1;
}
static_assert(std::ranges::all_of(catalogue, is_complete));

// True if all bytes of a non-empty map are 0: the first is, and each is equal to the one before it.
bool is_zero(Bytes map) {
  return map[0] == 0 && std::memcmp(map.data(), map.data() + 1, map.size() - 1) == 0;
}

// A setting that is on by default is on with any word but 0.
bool is_default_word(const Parameter &parameter, uint32_t word) {
  return parameter.default_word == 1 ? word != 0 : word == parameter.default_word;
}

}  // namespace

std::span<const Parameter> parameters_of(Scope scope) {
  const std::span<const Parameter> all = catalogue;
  return scope == Scope::GLOBAL ? all.first(global_count) : all.subspan(global_count);
}

const Parameter *find_parameter(uint32_t type) {
  return type >= 1 && type <= std::size(catalogue) ? &catalogue[type - 1] : nullptr;
}

uint32_t mismatch_of(uint32_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->mismatch : uint32_t{STP_MCEC_ERR_FAILURE};
}

bool is_default(const Parameter &parameter, Bytes value) {
  switch (parameter.kind) {
    case STP_MCEC_KIND_TEXT:
      return !value.empty() && value[0] == 0;
    case STP_MCEC_KIND_VLANS:
      return value.size() >= parameter.length && is_empty(vlans_of(value));
    case STP_MCEC_KIND_MAP:
      return value.size() == parameter.length && is_zero(value);
    default:
      return value.size() >= parameter.length && is_default_word(parameter, word_of(value));
  }
}

const char *choice_text(const Parameter &parameter, uint32_t value) {
  const Choices &known = *parameter.choices;
  const auto found = std::ranges::find(known.texts, value, &Choices::Text::value);
  return found != known.texts.end() ? found->text : known.other;
}

const char *port_type_text(uint32_t flags) {
  if ((flags & STP_MCEC_GBL_PORT_TYPE_EDGE) != 0) return "Edge";
  return (flags & STP_MCEC_GBL_PORT_TYPE_NETWORK) != 0 ? "Network" : "Normal";
}

const char *enabled_text(bool is_enabled) {
  return is_enabled ? enabled : disabled;
}

}  // namespace mcec

using namespace mcec;

extern "C" const char *stp_mcec_type1_cfg_type_to_str(uint16_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->name : "Unknown";
}

extern "C" uint32_t stp_mcec_get_type1_cfg_compat_chk_errcode(uint16_t type) {
  return mismatch_of(type);
}

extern "C" uint32_t stp_mcec_type1_cfg_param_is_default(uint32_t type, uint32_t len, void *value) {
  const Parameter *parameter = find_parameter(type);
  if (parameter == nullptr) return 0;
  // Only the test of a map uses the length: the caller guarantees the bytes that the others read.
  const uint32_t length = parameter->kind == STP_MCEC_KIND_MAP ? len : parameter->length;
  return is_default(*parameter, {static_cast<const uint8_t *>(value), length}) ? 1 : 0;
}
