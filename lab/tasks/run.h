// Running scenarios: each step on the switches, and what is expected snapshot against what came of it.
#pragma once

#include <functional>

#include "output/json.h"
#include "scenario/scenario.h"

namespace lab {

/*
 * A run's outcome is told as JSON, one document a scenario, and everything that is printed for a
 * person is made from it; docs/lab.md describes its fields.
 */
struct Watcher {
  std::function<void(const Json &step)> on_step;                   // a step is done
  std::function<void(std::size_t done, std::size_t all)> on_work;  // a piece of work is done
};

struct RunOptions {
  bool log = false;
};

// Run a whole scenario. When a switch fails or the run is interrupted, the outcome says so in
// "failed", and has the steps done until then.
Json run(const Scenario &scenario, const RunOptions &options, const Watcher &watcher);

// Run the steps before `position` (from 0), then find out what that step would do; in "what_if" of
// the outcome, unless it "failed".
Json what_if(const Scenario &scenario, std::size_t position, const RunOptions &options,
             const Watcher &watcher);

}  // namespace lab
