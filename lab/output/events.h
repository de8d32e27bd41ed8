// Writes the events of a watch as text and as JSON; docs/watch.md describes them.
#pragma once

#include <string>

#include "report/status.h"

namespace lab {

// The lines of an event, each with its time, escaped for the locale. Only the first rows are named.
std::string describe_event(const Event &event);

// A JSON document on one line.
std::string format_event(const Event &event);

// Formats a time as RFC 3339, in local time with its offset.
std::string format_time(std::chrono::system_clock::time_point time);

// The reasons of a verdict: "PortChannel10 (ifi-port-guard); PortChannel20 (on left only)". Empty
// if the pair agrees, unless spanning tree is off on both sides.
std::string describe_causes(const PairReport &report);

// "the verdict is unknown: left is disconnected: Connection refused".
std::string describe_unknown(const PairStatus &status);

}  // namespace lab
