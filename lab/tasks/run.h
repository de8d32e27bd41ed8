// Runs of scenarios: each step on the switches, and its expectations checked.
#pragma once

#include <functional>

#include "report/run.h"
#include "scenario/scenario.h"

namespace lab {

struct RunOptions {
  bool log = false;                                     // with the event histories
  std::function<void(const StepReport &step)> on_step;  // after each step
};

// Run a whole scenario. When a switch fails or the run is interrupted, the report has a failure,
// and the steps before it have been handed to on_step.
RunReport run(const Scenario &scenario, const RunOptions &options);

// Run the steps before `position` (from 0), then find out what that step would change; in what_if
// of the report unless there is a failure.
RunReport what_if(const Scenario &scenario, std::size_t position, const RunOptions &options);

}  // namespace lab
