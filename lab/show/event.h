// What happens to a watched pair, for a person.
#pragma once

#include <string>

#include "language/json.h"

namespace lab {

// The lines of an event of outcome/events.h, each with its time, as this locale can show them. A
// burst is told by its first rows.
std::string event_text(const Json &event);

}  // namespace lab
