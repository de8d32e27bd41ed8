// Runs the steps of scenarios on a pair of switches, and checks their expectations.
#pragma once

#include <functional>

#include "report/run.h"
#include "scenario/scenario.h"

namespace lab {

struct RunOptions {
  bool log = false;                                     // collect the event histories
  std::function<void(const StepReport &step)> on_step;  // called after each step
  // Run only the steps before this one (from 0), then try it on copies of the pair.
  std::optional<std::size_t> what_if = {};
};

// Runs a scenario. If a switch fails or the run is interrupted, the report has a failure; `on_step`
// has been called for the steps before.
RunReport run(const Scenario &scenario, const RunOptions &options);

}  // namespace lab
