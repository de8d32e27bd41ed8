// Events of a watch, for a person.
#pragma once

#include <string>

#include "report/event.h"

namespace lab {

// The lines of an event, each with its time, as this locale can show them. Of many rows the first
// are named.
std::string describe_event(const Event &event);

}  // namespace lab
