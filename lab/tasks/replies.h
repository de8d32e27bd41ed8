// What a switch replied, as a report.
#pragma once

#include "pair/pair.h"
#include "report/run.h"

namespace lab {

// Add a reply to the report of a switch. A step may make several requests: the first result that is
// not 0 counts, and lists grow. `settings` are those of the switch, for the names of its ports.
void add_reply(const Request &request, const Reply &reply, const Settings &settings,
               SwitchReport &report);

}  // namespace lab
