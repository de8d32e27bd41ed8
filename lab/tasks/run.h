// Runs the steps of scenarios on a pair of switches, and checks their expectations.
#pragma once

#include <functional>

#include "report/run.h"
#include "scenario/scenario.h"

namespace lab {

struct RunOptions {
  bool log = false;                                     // collect the event histories
  std::function<void(const StepReport &step)> on_step;  // called after each step
};

// Runs a scenario. If a switch fails or the run is interrupted, the report has a failure; `on_step`
// has been called for the steps before.
RunReport run(const Scenario &scenario, const RunOptions &options);

// Runs the steps before `position` (from 0), then tries that step on copies of the pair. Sets
// `what_if` in the report unless there is a failure.
RunReport what_if(const Scenario &scenario, std::size_t position, const RunOptions &options);

}  // namespace lab
