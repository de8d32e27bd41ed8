// Events of a watch, for a person.
#pragma once

#include <string>

#include "report/event.h"

namespace lab {

// The lines of an event, each with its time, as this locale can show them. Of many rows the first
// are named.
std::string describe_event(const Event &event);

// Why the verdict is what it is: "PortChannel10 (ifi-port-guard); PortChannel20 (on left only)".
// "": the pair agrees.
std::string describe_causes(const PairReport &report);

// "the verdict is not known: left is disconnected: Connection refused".
std::string describe_unknown(const PairStatus &status);

}  // namespace lab
