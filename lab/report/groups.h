// Scopes that differ alike, as one.
#pragma once

#include "report/pair.h"

namespace lab {

struct ScopeGroup {
  std::string name;                         // "PortChannel10-69"
  std::vector<const ScopeReport *> scopes;  // at least one, alike but for their names
};

// In the order of their first scopes. Scopes whose ports have names of their own stay alone.
std::vector<ScopeGroup> group_scopes(const std::vector<const ScopeReport *> &scopes);

struct NoteGroup {
  std::string channels;  // "PortChannel10-29"; empty: the switch
  const NoteReport *note;
};

// Notes that are alike but for their channels.
std::vector<NoteGroup> group_notes(const std::vector<NoteReport> &notes);

// "PortChannel10-12,PortChannel20,Po1", of names in natural order.
std::string join_ranges(const std::vector<std::string> &names);

// The fix of a parameter, for all scopes of its group.
Fix widen_fix(Fix fix, const ScopeGroup &group);

// The row that a side lacks, for all scopes of a group.
std::string widen_missing_row(const ScopeGroup &group);

}  // namespace lab
