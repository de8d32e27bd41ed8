// What the switches of a pair reply, as reports.
#pragma once

#include <functional>

#include "pair/pair.h"
#include "report/run.h"

namespace lab {

// How the switches of a pair are asked.
using Asker = std::function<Replies(const Requests &)>;

// Called with every reply of the two, and how many scopes it covers.
using ReplyListener = std::function<void(const Requests &, const Replies &, std::size_t)>;

// Let both switches check these scopes, in the order given.
std::vector<ScopeReport> check_scopes(const Asker &ask, const std::vector<PairScope> &scopes,
                                      const std::optional<Vlans> &twins,
                                      const ReplyListener &listener = nullptr);

// Add a reply to the report of a switch. A step may make several requests: the first result that is
// not 0 counts, and lists grow. `settings` are those of the switch, for the names of its ports.
void add_reply(const Request &request, const Reply &reply, const Settings &settings,
               SwitchReport &report);

}  // namespace lab
