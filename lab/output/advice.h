// What a parameter that differs does to a real pair, and what is done about it.
#pragma once

#include "output/words.h"
#include "sonic/fields.h"

namespace lab {

struct Advice {
  uint16_t type;
  const char *harm;
  const char *fix;
};

const Advice &advice_on(uint16_t type);

// What a field means that gives no parameter.
const char *field_meaning(const Field &field);

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left"; in the words of state files
// where a side has no rows.
std::string describe_fix(const Fix &fix, const SideNames &names = switch_names);

// What is to be done about a channel that a switch lacks; empty: nothing, or it is not known.
std::string describe_missing_row(const ScopeGroup &group, const SideNames &names);

// Does a patch change the mode of spanning tree? On a running switch that takes two steps.
bool has_mode_change(const Patch &patch);
bool has_mode_change(const ParameterReport &parameter);

inline constexpr char mode_steps[] =
    "disable the old mode on the switch first, then enable the new one";

}  // namespace lab
