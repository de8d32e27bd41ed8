// Events of a watch, as JSON; docs/watch.md describes them.
#pragma once

#include "report/event.h"

namespace lab {

// A document on one line.
std::string format_event(const Event &event);

// RFC 3339, local time with its offset.
std::string format_time(std::chrono::system_clock::time_point time);

}  // namespace lab
