#include "foundation/catalogue.h"

#include <algorithm>

#include "draimiofaf/foundation.h"
#include "foundation/bitmap.h"
#include "foundation/wire.h"

namespace mcec {
namespace {

struct OnTheWire {
  uint16_t type;
  Scope scope;
  uint16_t length;
  uint32_t mismatch;
};

constexpr OnTheWire wire[] = {
#define MCEC_ROW(name, type, scope, length, code, ...) {type, Scope::scope, length, code},
    STP_MCEC_TYPE1_PARAMETERS(MCEC_ROW)
#undef MCEC_ROW
};

constexpr ChoiceText modes[] = {{STP_MCEC_STP_MODE_RAPID_PVST, "Rapid-PVST"}};
constexpr ChoiceText enabled[] = {{0, "Disabled"}};
constexpr ChoiceText port_types[] = {{STP_MCEC_IFI_PORT_TYPE_EDGE, "Edge Port"},
                                     {STP_MCEC_IFI_PORT_TYPE_NORMAL, "Normal Port"},
                                     {STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK, "Edge Trunk Port"},
                                     {STP_MCEC_IFI_PORT_TYPE_NETWORK, "Network Port"}};
constexpr ChoiceText guards[] = {{STP_MCEC_IFI_PORT_GUARD_ROOT, "Root"},
                                 {STP_MCEC_IFI_PORT_GUARD_LOOP, "Loop"}};
constexpr ChoiceText simulations[] = {
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT, "Default"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_ENABLED, "Enabled"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DISABLED, "Disabled"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_ENABLED, "Default Enabled"},
    {STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_DISABLED, "Default Disabled"}};

struct Default {
  uint32_t word;
  bool any_other = false;
};
constexpr Default zero{0};
constexpr Default not_zero{0, true};

constexpr Parameter row(uint16_t type, const char *name, Compared compared, Form form, Default def,
                        const char *title, std::span<const ChoiceText> texts = {},
                        const char *other_text = "", OnPodPorts on_pod_ports = OnPodPorts::counts) {
  const OnTheWire &on_wire = wire[type - 1];
  return {on_wire.type, on_wire.scope, on_wire.length, on_wire.mismatch, name,
          compared,     on_pod_ports,  form,           def.word,         def.any_other,
          title,        texts,         other_text};
}

using enum Compared;

// The names are those that the event history has always shown, "Gaurd" included.
constexpr Parameter catalogue[] = {
    row(STP_MCEC_TYPE1_STP_MODE, "Mode", in_every_mode, Form::choice,
        {STP_MCEC_STP_MODE_RAPID_PVST}, "STP Mode", modes, "MST"),
    row(STP_MCEC_TYPE1_STP_ENDIS, "Enable/Disable STP", in_rapid_pvst, Form::vlans, {},
        "STP Disabled"),
    row(STP_MCEC_TYPE1_MST_REGION_NAME, "MST Region Name", in_mst, Form::text, {},
        "STP MST Region Name"),
    row(STP_MCEC_TYPE1_MST_REGION_REVISION, "MST Region Revision", in_mst, Form::number, zero,
        "STP MST Region Revision"),
    row(STP_MCEC_TYPE1_MST_REGION_VI_MAP, "MST Region VI Map", in_mst, Form::map, {},
        "STP MST Region Instance to VLAN Mapping"),
    row(STP_MCEC_TYPE1_LOOP_GUARD, "Loop Guard", in_every_mode, Form::choice, zero, "STP Loopguard",
        enabled, "Enabled"),
    row(STP_MCEC_TYPE1_BRIDGE_ASSURANCE, "Bridge Assurance", in_every_mode, Form::choice, not_zero,
        "STP Bridge Assurance", enabled, "Enabled"),
    row(STP_MCEC_TYPE1_GBL_PORT_TYPE, "Gbl Port Type", in_every_mode, Form::flags, zero,
        "STP Port Type, Edge BPDUFilter, Edge BPDUGuard"),
    row(STP_MCEC_TYPE1_GBL_MST_SIMULATE_PVST, "Gbl MST Simulate PVST", in_mst, Form::choice,
        not_zero, "STP MST Simulate PVST", enabled, "Enabled"),
    row(STP_MCEC_TYPE1_IFI_PORT_TYPE, "Ifi Port Type", in_every_mode, Form::choice, zero,
        "STP Port Type", port_types, "Default", OnPodPorts::is_passed_over),
    row(STP_MCEC_TYPE1_IFI_PORT_GUARD, "Ifi Port Gaurd", in_every_mode, Form::choice, zero,
        "STP Port Guard", guards, "None"),
    row(STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST, "Ifi MST Simulate PVST", in_mst, Form::choice, zero,
        "STP MST Simulate PVST", simulations, "None"),
};

// By type, which is by scope too.
constexpr std::size_t global_count =
    static_cast<std::size_t>(std::ranges::count(catalogue, Scope::GLOBAL, &Parameter::scope));

constexpr bool in_order() {
  for (std::size_t i = 0; i < std::size(catalogue); ++i) {
    if (catalogue[i].type != i + 1) return false;
    if ((catalogue[i].scope == Scope::GLOBAL) != (i < global_count)) return false;
  }
  return true;
}
static_assert(std::size(catalogue) == std::size(wire) && in_order());

// All bytes of a map are zero when those of its first 64 are, and the others are what stands 64 bytes
// before them: one comparison, of addresses that lie alike in the lines of a cache.
bool is_zero(Bytes map) {
  const auto words = load<std::array<uint64_t, 8>>(map.data());
  uint64_t any = 0;
  for (const uint64_t word : words) any |= word;
  return any == 0 &&
         std::memcmp(map.data(), map.data() + sizeof words, map.size() - sizeof words) == 0;
}

}  // namespace

std::span<const Parameter> parameters_of(Scope scope) {
  const std::span<const Parameter> all = catalogue;
  return scope == Scope::GLOBAL ? all.first(global_count) : all.subspan(global_count);
}

const Parameter *find_parameter(uint32_t type) {
  return type >= 1 && type <= std::size(catalogue) ? &catalogue[type - 1] : nullptr;
}

const char *choice_text(const Parameter &parameter, uint32_t value) {
  const auto found = std::find_if(parameter.texts.begin(), parameter.texts.end(),
                                  [value](const ChoiceText &text) { return text.value == value; });
  return found != parameter.texts.end() ? found->text : parameter.other_text;
}

const char *port_type_text(uint32_t flags) {
  if ((flags & STP_MCEC_GBL_PORT_TYPE_EDGE) != 0) return "Edge";
  return (flags & STP_MCEC_GBL_PORT_TYPE_NETWORK) != 0 ? "Network" : "Normal";
}

const char *enabled_text(bool on) {
  return on ? "Enabled" : "Disabled";
}

}  // namespace mcec

using namespace mcec;

extern "C" const char *stp_mcec_type1_cfg_type_to_str(uint16_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->name : "Unknown";
}

extern "C" uint32_t stp_mcec_get_type1_cfg_compat_chk_errcode(uint16_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->mismatch : uint32_t{STP_MCEC_ERR_FAILURE};
}

extern "C" uint32_t stp_mcec_type1_cfg_param_is_default(uint32_t type, uint32_t len, void *value) {
  const Parameter *parameter = find_parameter(type);
  if (parameter == nullptr) return 0;
  const Bytes bytes{static_cast<const uint8_t *>(value), parameter->length};
  switch (parameter->form) {
    case Form::text:
      return bytes[0] == 0;
    case Form::vlans:
      return is_empty(vlans_of(bytes));
    case Form::map:
      return len == bytes.size() && is_zero(bytes);
    default:
      return (word_of(bytes) == parameter->default_word) != parameter->any_other_is_default;
  }
}
