// Events of a watch, for a person and as JSON; docs/watch.md describes them.
#pragma once

#include <string>

#include "report/status.h"

namespace lab {

// The lines of an event, each with its time, as this locale can show them. Of many rows the first
// are named.
std::string describe_event(const Event &event);

// A JSON document on one line.
std::string format_event(const Event &event);

// RFC 3339, local time with its offset.
std::string format_time(std::chrono::system_clock::time_point time);

// Why the verdict is what it is: "PortChannel10 (ifi-port-guard); PortChannel20 (on left only)".
// "": the pair agrees.
std::string describe_causes(const PairReport &report);

// "the verdict is not known: left is disconnected: Connection refused".
std::string describe_unknown(const PairStatus &status);

}  // namespace lab
