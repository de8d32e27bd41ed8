#include "tasks/run.h"

#include <algorithm>
#include <map>

#include "report/verdict.h"
#include "tasks/check.h"
#include "text/wait.h"

namespace lab {
namespace {

// A pair on which a scenario runs.
struct Runner {
  const Scenario &scenario;
  bool log;
  std::optional<StepHead> &current_step;
  std::array<std::map<std::string, Bytes>, 2> saved = {};  // exported arrays by name
  Pair pair = {};
};

// Sets the array of a rebuild: the one that an earlier step saved on this switch, else on the
// other.
void set_saved_array(const Runner &runner, const Step &step, std::size_t side,
                     Operation &operation) {
  auto *rebuild = std::get_if<Rebuild>(&operation);
  if (rebuild == nullptr) return;
  for (const std::size_t i : {side, 1 - side}) {
    const auto found = runner.saved[i].find(step.rebuilt_from);
    if (found == runner.saved[i].end()) continue;
    rebuild->array = found->second;
    return;
  }
}

StepReport run_step(Runner &runner, const Step &step) {
  StepReport report{.head = step};
  Requests requests = step.requests;
  if (step.check) requests = {{{*step.check}, {*step.check}}};
  for (std::size_t side = 0; side < requests.size(); ++side) {
    for (Operation &operation : requests[side]) set_saved_array(runner, step, side, operation);
  }
  const Replies replies = ask(runner.pair, requests, runner.log);
  for (std::size_t side = 0; side < replies.size(); ++side) {
    if (requests[side].empty() || (step.check && !runner.log)) continue;
    report.switches[side] = replies[side].report;
    if (!step.saved_as.empty()) {
      runner.saved[side][step.saved_as] = replies[side].report.exported.value_or(Bytes{});
    }
  }
  if (step.check) report.checks = report_scopes(*step.check, replies);
  check_expectations(step, report);
  return report;
}

void run_steps(Runner &runner, std::size_t count,
               const std::function<void(const StepReport &)> &on_step) {
  const SettingsPair &settings = runner.scenario.settings;
  ask(runner.pair, {{{SetUp{settings[0]}}, {SetUp{settings[1]}}}});
  for (std::size_t i = 0; i < count; ++i) {
    runner.current_step = runner.scenario.steps[i];
    on_step(run_step(runner, runner.scenario.steps[i]));
  }
}

void add_step(const StepReport &step, RunReport &report) {
  if (step.checks) report.agree = std::ranges::all_of(*step.checks, is_agreed);
  report.expected += step.expectations.size();
  report.met +=
      std::size_t(std::ranges::count(step.expectations, true, &ExpectationReport::is_met));
}

// --- what if ---

// Returns a check of all scopes with the settings before a step.
Check make_full_check(const Scenario &scenario, std::size_t position) {
  SettingsPairView now = {&scenario.settings[0], &scenario.settings[1]};
  for (std::size_t i = 0; i < position; ++i) {
    for (std::size_t side = 0; side < now.size(); ++side) {
      for (const Operation &operation : scenario.steps[i].requests[side]) {
        if (const auto *change = std::get_if<ChangePlatform>(&operation)) {
          now[side] = &change->settings;
        }
      }
    }
  }
  return {find_scopes(now), scenario.twins};
}

// Tries a step on one switch. A new pair runs the steps before it, so that injected failures occur
// where they would in the run itself.
WhatIfSide try_step(const Scenario &scenario, std::size_t position, std::size_t side, bool log,
                    const Check &check, const std::vector<ScopeReport> &now) {
  Step step = scenario.steps[position];
  step.on[1 - side] = false;
  step.requests[1 - side].clear();
  std::optional<StepHead> unused;
  Runner runner{.scenario = scenario, .log = log, .current_step = unused};
  run_steps(runner, position, [](const StepReport &) {});
  WhatIfSide tried{.answer = run_step(runner, step).switches[side].value_or(SwitchReport{}),
                   .checked = check.scopes.size()};
  const std::vector<ScopeReport> then = check_scopes(runner.pair, check);
  for (std::size_t i = 0; i < then.size(); ++i) {
    if (now[i] == then[i]) continue;
    tried.now.push_back(now[i]);
    tried.then.push_back(then[i]);
  }
  return tried;
}

WhatIfReport try_on_each_side(Runner &runner, std::size_t position) {
  const Step &step = runner.scenario.steps[position];
  runner.current_step = step;
  WhatIfReport report{.head = step};
  const Check check = make_full_check(runner.scenario, position);
  const std::vector<ScopeReport> now = check_scopes(runner.pair, check);
  for (std::size_t side = 0; side < report.sides.size(); ++side) {
    if (!step.on[side]) continue;
    report.sides[side] = try_step(runner.scenario, position, side, runner.log, check, now);
  }
  return report;
}

}  // namespace

RunReport run(const Scenario &scenario, const RunOptions &options) {
  RunReport report{.path = scenario.path, .title = scenario.title, .about = scenario.about};
  std::optional<StepHead> current_step;
  try {
    Runner runner{.scenario = scenario, .log = options.log, .current_step = current_step};
    run_steps(runner, options.what_if.value_or(scenario.steps.size()), [&](const StepReport &step) {
      add_step(step, report);
      options.on_step(step);
    });
    if (options.what_if) report.what_if = try_on_each_side(runner, *options.what_if);
  } catch (const Interrupted &) {
    report.failure = {"interrupted", current_step};
  } catch (const SwitchFailed &failure) {
    report.failure = {failure.what(), current_step};
  }
  return report;
}

}  // namespace lab
