// The catalogue: all that the library knows about each of the twelve type-1 parameters, as data.
#pragma once

#include <cstdint>
#include <span>

#include "draimiofaf/types.h"

namespace mcec {

enum class Scope : uint8_t { GLOBAL, INTERFACE };

// The spanning-tree modes in which the peers must agree on a parameter.
enum class Compared : uint8_t { in_every_mode, in_mst, in_rapid_pvst };

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
  Form form;
  // Of a word: default when it equals default_word, or when it is any other.
  uint32_t default_word;
  bool any_other_is_default;
  // For display: what the parameter is called there, and the texts of a choice.
  const char *title;
  std::span<const ChoiceText> texts;
  const char *other_text;
};

// All parameters in the order of their types, 1 to 12.
std::span<const Parameter> parameters();

// The parameter of a type, nullptr when there is none.
const Parameter *find_parameter(uint32_t type);

// The parameters of the MST region, in the order in which its reset hands them out. The entry of
// the VLAN map is shorter there than a cached map.
inline constexpr uint16_t mst_region_types[] = {STP_MCEC_TYPE1_MST_REGION_NAME,
                                                STP_MCEC_TYPE1_MST_REGION_REVISION,
                                                STP_MCEC_TYPE1_MST_REGION_VI_MAP};
inline constexpr uint16_t mst_region_map_entry_length = 80;

uint16_t mst_region_entry_length(uint16_t type);

const char *choice_text(const Parameter &parameter, uint32_t value);
const char *port_type_text(uint32_t flags);
const char *enabled_text(bool enabled);

}  // namespace mcec
