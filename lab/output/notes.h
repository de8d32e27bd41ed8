// Notes, for a person.
#pragma once

#include <string>

#include "output/sides.h"
#include "report/pair.h"

namespace lab {

// A sentence, without the channel that the note is of: notes on several channels may have the same.
std::string describe_note(const NoteReport &report, const SideNames &names = switch_names);

// "warning", "info".
const char *severity_name(NoteKind kind);

}  // namespace lab
