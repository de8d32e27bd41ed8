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
  std::vector<std::string> channels;  // none: the switch
  const Note *note;
};

// Notes that are alike but for their channels.
std::vector<NoteGroup> group_notes(const std::vector<Note> &notes);

// "PortChannel10-12,PortChannel20,Po1", of names in natural order.
std::string join_ranges(const std::vector<std::string> &names);

}  // namespace lab
