// Groups of scopes and of notes that are equal except for the channel.
#pragma once

#include "report/pair.h"

namespace lab {

struct ScopeGroup {
  std::string name;                         // "PortChannel10-69"
  std::vector<const ScopeReport *> scopes;  // at least one; equal except for their names
};

// Groups scopes in the order of their first occurrence. A scope with ports that are not named after
// the channel, or with inconsistent ports, is a group of its own.
std::vector<ScopeGroup> group_scopes(const std::vector<const ScopeReport *> &scopes);

struct NoteGroup {
  std::vector<std::string> channels;  // empty: the switch
  const Note *note;
};

// Groups notes that are equal except for their channels.
std::vector<NoteGroup> group_notes(const std::vector<Note> &notes);

// Joins names, in natural order, with ranges: "PortChannel10-12,PortChannel20,Po1".
std::string join_ranges(const std::vector<std::string> &names);

}  // namespace lab
