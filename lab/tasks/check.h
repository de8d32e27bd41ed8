// A check of a pair, scope by scope.
#pragma once

#include <functional>

#include "pair/pair.h"
#include "report/scope.h"

namespace lab {

// How the switches of a pair are asked.
using Asker = std::function<Replies(const Requests &)>;

// Called with every reply of the two, and how many scopes it covers.
using ReplyListener = std::function<void(const Requests &, const Replies &, std::size_t)>;

// Let both switches check these scopes, in the order given.
std::vector<ScopeReport> check_scopes(const Asker &ask, const std::vector<PairScope> &scopes,
                                      const std::optional<Vlans> &twins,
                                      const ReplyListener &listener = nullptr);

}  // namespace lab
