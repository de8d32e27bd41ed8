// What happens to a watched pair, for a person.
#pragma once

#include <string>

#include "outcome/json.h"

namespace lab {

// Does the terminal, by its locale, take more than ASCII?
bool takes_utf8();

// The lines of an event of outcome/events.h, each with its time. A burst is told by its first rows.
std::string event_text(const Json &event, bool utf8);

}  // namespace lab
