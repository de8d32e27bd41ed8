// The catalogue: all that the library knows about each of the twelve type-1 parameters, as data.
#pragma once

#include <cstdint>
#include <span>

#include "draimiofaf/types.h"

namespace mcec {

enum class Scope : uint8_t { GLOBAL, INTERFACE };

// The spanning-tree modes in which the peers must agree on a parameter.
enum class Compared : uint8_t { in_every_mode, in_mst, in_rapid_pvst };

// What a difference on a pod host interface means: the same as elsewhere, or nothing.
enum class OnPodPorts : uint8_t { counts, is_passed_over };

// What a value is, which decides how it is logged, shown and tested for being the default. The
// first three are words.
enum class Form : uint8_t {
  number,  // shown in decimal
  choice,  // shown as one of a few texts
  flags,   // the global port type
  text,    // default when empty
  vlans,   // a bitmap record; default when no VLAN is set
  map,     // MST instance by VLAN; default when every VLAN is in instance 0
};

constexpr bool is_word(Form form) {
  return form <= Form::flags;
}

struct ChoiceText {
  uint32_t value;
  const char *text;
};

struct Parameter {
  uint16_t type;
  Scope scope;
  uint16_t length;
  uint32_t mismatch;
  const char *name;
  Compared compared;
  OnPodPorts on_pod_ports;
  Form form;
  // Of a word: default when it equals default_word, or when it is any other.
  uint32_t default_word;
  bool any_other_is_default;
  // For display: what the parameter is called there, and the texts of a choice.
  const char *title;
  std::span<const ChoiceText> texts;
  const char *other_text;
};

// The parameters of a scope in the order of their types.
std::span<const Parameter> parameters_of(Scope scope);

// The parameter of a type, nullptr when there is none.
const Parameter *find_parameter(uint32_t type);

// The parameters of the MST region, in the order in which its reset hands them out: an entry of
// `length` zero bytes, the default, which is shorter than a cached VLAN map; and the reset's line.
struct RegionParameter {
  uint16_t type;
  uint16_t length;
  const char *reset_line;
};

inline constexpr RegionParameter mst_region[] = {
    {STP_MCEC_TYPE1_MST_REGION_NAME, 32, "Default MST Region Config Name, deleting avl node"},
    {STP_MCEC_TYPE1_MST_REGION_REVISION, 4,
     "Default MST Region Config Revision, deleting avl node"},
    {STP_MCEC_TYPE1_MST_REGION_VI_MAP, 80, "Default MST Region Config VI Map, deleting avl node"},
};

const char *choice_text(const Parameter &parameter, uint32_t value);
const char *port_type_text(uint32_t flags);
const char *enabled_text(bool enabled);

}  // namespace mcec
