// What happens to a watched pair, for a person.
#pragma once

#include <string>

#include "output/json.h"

namespace lab {

// The lines of an event of tasks/events.h, each with its time, as this locale can show them. A
// burst is told by its first rows.
std::string event_text(const Json &event);

}  // namespace lab
