// Notes, for a person.
#pragma once

#include <string>

#include "report/notes.h"

namespace lab {

// A sentence, without the channel that the note is of: notes on several channels may have the same.
std::string describe_note(const Note &note);

}  // namespace lab
