// A check of a pair, scope by scope.
#pragma once

#include <functional>

#include "output/json.h"
#include "pair/pair.h"
#include "pair/scopes.h"

namespace lab {

// How the switches of a pair are asked.
using Asker = std::function<Replies(const Requests &)>;

// Let both switches check these scopes, and tell each in the order given. `replied` hears every
// reply of the two, and how many scopes it is about; nullptr: nobody does.
Json check_scopes(
    const Asker &ask, const std::vector<PairScope> &scopes, const std::optional<Vlans> &twins,
    const std::function<void(const Requests &, const Replies &, std::size_t)> &replied);

}  // namespace lab
