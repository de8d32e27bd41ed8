#include "tasks/run.h"

#include <algorithm>
#include <map>

#include "report/verdict.h"
#include "tasks/check.h"
#include "text/signals.h"

namespace lab {
namespace {

// A pair that runs a scenario.
struct Runner {
  const Scenario &scenario;
  const RunOptions &options;
  RunReport &report;
  std::optional<StepHead> &at;  // the step under way
  Pair pair = {};
  SettingsPair now = scenario.settings;                    // as the steps so far leave them
  std::array<std::map<std::string, Bytes>, 2> saved = {};  // exported arrays by name
  std::size_t done = 0;
  std::size_t work = 0;
};

void count_work(Runner &runner, std::size_t amount) {
  runner.done += amount;
  runner.work = std::max(runner.work, runner.done);
  if (runner.options.on_work) runner.options.on_work(runner.done, runner.work);
}

Replies ask_pair(Runner &runner, Requests requests) {
  if (interrupted()) throw Interrupted{};
  for (auto &request : requests) {
    if (request) request->log = runner.options.log;
  }
  return ask(runner.pair, requests);
}

// --- checks ---

std::vector<PairScope> find_channels(const Runner &runner) {
  return channel_scopes({&runner.now[0], &runner.now[1]});
}

std::vector<PairScope> find_scopes(const Runner &runner, const CheckPlan &plan) {
  std::vector<PairScope> scopes = plan.ports;
  if (plan.of_switch) scopes.emplace_back();
  if (!plan.all_channels && plan.channel.empty()) return scopes;
  for (const PairScope &channel : find_channels(runner)) {
    if (plan.all_channels || channel.name == plan.channel) scopes.push_back(channel);
  }
  return scopes;
}

void run_check(Runner &runner, const Step &step, StepReport &report) {
  report.checks =
      check_scopes([&](const Requests &requests) { return ask_pair(runner, requests); },
                   find_scopes(runner, *step.check), step.check->twins,
                   [&](const Requests &requests, const Replies &replies, std::size_t scopes) {
                     for (std::size_t i = 0; runner.options.log && i < replies.size(); ++i) {
                       if (!report.switches[i]) report.switches[i].emplace();
                       add_reply(*requests[i], *replies[i], runner.now[i], *report.switches[i]);
                     }
                     count_work(runner, scopes);
                   });
  runner.report.agree = is_agreed(find_verdict(*report.checks));
}

// Everything that a verdict depends on.
std::vector<ScopeReport> check_all(Runner &runner) {
  std::vector<PairScope> scopes = find_channels(runner);
  scopes.insert(scopes.begin(), PairScope{});
  return check_scopes([&](const Requests &requests) { return ask_pair(runner, requests); }, scopes,
                      runner.scenario.twins);
}

// --- steps ---

// Give a request what an earlier step has saved, on this switch or else on the other.
void fill_in(const Runner &runner, const Step &step, std::size_t side, Request &request) {
  auto *rebuild = std::get_if<Rebuild>(&request.asked);
  if (rebuild == nullptr) return;
  for (const std::size_t i : {side, 1 - side}) {
    const auto found = runner.saved[i].find(step.rebuilt_from);
    if (found == runner.saved[i].end()) continue;
    rebuild->array = found->second;
    return;
  }
}

void run_requests(Runner &runner, const Step &step,
                  std::array<std::optional<SwitchReport>, 2> &switches) {
  for (Requests requests : step.requests) {
    for (std::size_t i = 0; i < requests.size(); ++i) {
      if (!requests[i]) continue;
      fill_in(runner, step, i, *requests[i]);
      if (const auto *change = std::get_if<ChangeWorld>(&requests[i]->asked)) {
        runner.now[i].channels = change->change.channels;
        for (const Port &port : change->change.ports) port_at(runner.now[i], port.index) = port;
      }
    }
    const Replies replies = ask_pair(runner, requests);
    for (std::size_t i = 0; i < replies.size(); ++i) {
      if (!replies[i]) continue;
      if (!switches[i]) switches[i].emplace();
      add_reply(*requests[i], *replies[i], runner.now[i], *switches[i]);
      if (!step.saved_as.empty()) {
        runner.saved[i][step.saved_as] = std::get<Exported>(replies[i]->answer).array;
      }
    }
    count_work(runner, 1);
  }
}

StepReport run_step(Runner &runner, std::size_t position) {
  const Step &step = runner.scenario.steps[position];
  runner.at = step;
  StepReport report{.head = step, .switches = {}, .checks = {}, .expectations = {}};
  if (step.check) {
    run_check(runner, step, report);
  } else {
    run_requests(runner, step, report.switches);
  }
  check_expectations(step, report);
  return report;
}

void run_steps(Runner &runner, std::size_t count) {
  Requests set_up;
  for (std::size_t i = 0; i < set_up.size(); ++i) {
    set_up[i] = Request{false, SetUp{runner.scenario.settings[i]}};
  }
  ask_pair(runner, set_up);
  for (std::size_t i = 0; i < count; ++i) {
    const StepReport step = run_step(runner, i);
    runner.report.expected += step.expectations.size();
    runner.report.met += static_cast<std::size_t>(
        std::count_if(step.expectations.begin(), step.expectations.end(),
                      [](const ExpectationReport &expectation) { return expectation.is_met; }));
    if (runner.options.on_step) runner.options.on_step(step);
  }
}

std::size_t estimate_work(const Scenario &scenario, std::size_t count) {
  std::size_t work = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Step &step = scenario.steps[i];
    work += step.requests.size() +
            (step.check ? std::max<std::size_t>(step.check->ports.size(), 1) : 0);
  }
  return work;
}

// Run the first `count` steps of a scenario, then `finish`.
RunReport run_until(const Scenario &scenario, const RunOptions &options, std::size_t count,
                    const std::function<void(Runner &)> &finish) {
  RunReport report{.path = scenario.path,
                   .title = scenario.title,
                   .about = scenario.about,
                   .agree = {},
                   .what_if = {},
                   .failure = {}};
  std::optional<StepHead> at;
  try {
    Runner runner{scenario, options, report, at};
    runner.work = estimate_work(scenario, count);
    run_steps(runner, count);
    finish(runner);
  } catch (const Interrupted &) {
    report.failure = {"interrupted", at};
  } catch (const SwitchFailed &failure) {
    report.failure = {failure.what(), at};
  }
  return report;
}

// --- what if ---

// What a step would do on one switch: on another pair that has run as far, so that a failure that
// was injected occurs there as it would here.
WhatIfSide try_step(const Scenario &scenario, std::size_t position, std::size_t side,
                    const RunOptions &options, const std::vector<ScopeReport> &now) {
  Step step = scenario.steps[position];
  step.on[1 - side] = false;
  for (Requests &requests : step.requests) requests[1 - side].reset();
  const RunOptions unseen{.log = options.log, .on_step = nullptr, .on_work = nullptr};
  RunReport report;
  std::optional<StepHead> at;
  Runner runner{scenario, unseen, report, at};
  run_steps(runner, position);
  std::array<std::optional<SwitchReport>, 2> switches;
  run_requests(runner, step, switches);
  const std::vector<ScopeReport> then = check_all(runner);
  WhatIfSide tried{
      .answer = std::move(*switches[side]), .checked = then.size(), .now = {}, .then = {}};
  for (std::size_t i = 0; i < then.size(); ++i) {
    if (now[i] == then[i]) continue;
    tried.now.push_back(now[i]);
    tried.then.push_back(then[i]);
  }
  return tried;
}

void try_on_each_side(Runner &runner, std::size_t position) {
  runner.at = runner.scenario.steps[position];
  WhatIfReport report{.head = *runner.at, .sides = {}};
  const std::vector<ScopeReport> now = check_all(runner);
  for (std::size_t side = 0; side < report.sides.size(); ++side) {
    if (!report.head.on[side]) continue;
    report.sides[side] = try_step(runner.scenario, position, side, runner.options, now);
  }
  runner.report.what_if = std::move(report);
}

}  // namespace

RunReport run(const Scenario &scenario, const RunOptions &options) {
  return run_until(scenario, options, scenario.steps.size(), [](Runner &) {});
}

RunReport what_if(const Scenario &scenario, std::size_t position, const RunOptions &options) {
  return run_until(scenario, options, position,
                   [position](Runner &runner) { try_on_each_side(runner, position); });
}

}  // namespace lab
