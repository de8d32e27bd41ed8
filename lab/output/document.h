// What came of a run or a comparison, told as the JSON document that docs/lab.md describes. All that
// is printed for a person is made from it.
#pragma once

#include <array>
#include <string>

#include "output/json.h"
#include "pair/pair.h"
#include "scenario/scenario.h"

namespace lab {

// A step, as far as it is known before it is done.
Json told_step(const Step &step, std::size_t number);

// Add what one switch answered to what is told of it; of several requests of a step the first
// result that is not 0 counts, and lists grow. `settings`: of the switch, whose ports have names.
void tell_reply(const Request &request, const Reply &reply, const Settings &settings, Json &told);

// One scope as both switches see it.
Json told_scope(const PairScope &scope, const std::array<View, 2> &views);

}  // namespace lab
