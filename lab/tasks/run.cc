#include "tasks/run.h"

#include <map>

#include <algorithm>
#include "output/document.h"
#include "output/told.h"
#include "scenario/expectations.h"
#include "switch/state_reader.h"
#include "tasks/check.h"
#include "text/signals.h"

namespace lab {
namespace {

// A pair at work on a scenario.
struct Runner {
  const Scenario &scenario;
  RunOptions options;
  const Watcher &watcher;
  Pair pair = {};
  SettingsPair now = scenario.settings;  // as the steps so far leave the world of the switches
  std::optional<std::vector<PairScope>> channels = std::nullopt;  // as long as they stay
  std::array<std::map<std::string, Bytes>, 2> saved = {};         // exported arrays by name
  std::size_t done = 0;
  std::size_t work = 0;
  const Step *at = nullptr;  // the step under way
  std::size_t number = 0;
};

void worked(Runner &runner, std::size_t amount) {
  runner.done += amount;
  runner.work = std::max(runner.work, runner.done);
  if (runner.watcher.on_work) runner.watcher.on_work(runner.done, runner.work);
}

Replies ask_pair(Runner &runner, Requests requests) {
  if (interrupted()) throw Interrupted{};
  for (auto &request : requests) {
    if (request) request->log = runner.options.log;
  }
  return ask(runner.pair, requests);
}

// --- checks ---

const std::vector<PairScope> &channels_of(Runner &runner) {
  if (!runner.channels) runner.channels = channel_scopes({&runner.now[0], &runner.now[1]});
  return *runner.channels;
}

std::vector<PairScope> scopes_of(Runner &runner, const CheckPlan &plan) {
  std::vector<PairScope> scopes;
  if (plan.of_switch) scopes.emplace_back();
  if (!plan.all_channels && plan.channels.empty()) {
    scopes.insert(scopes.end(), plan.ports.begin(), plan.ports.end());
    return scopes;
  }
  for (const PairScope &channel : channels_of(runner)) {
    const auto named = std::find(plan.channels.begin(), plan.channels.end(), channel.name);
    if (plan.all_channels || named != plan.channels.end()) scopes.push_back(channel);
  }
  return scopes;
}

void check(Runner &runner, const Step &step, Json &told) {
  told["checks"] = check_scopes(
      [&](const Requests &requests) { return ask_pair(runner, requests); },
      scopes_of(runner, *step.check), step.check->twins,
      [&](const Requests &requests, const Replies &replies, std::size_t scopes) {
        for (std::size_t i = 0; runner.options.log && i < replies.size(); ++i) {
          tell_reply(*requests[i], *replies[i], runner.now[i], told["switches"][switch_names[i]]);
        }
        worked(runner, scopes);
      });
}

// Everything that can make a difference in anybody's verdict.
Json check_all(Runner &runner) {
  std::vector<PairScope> scopes = channels_of(runner);
  scopes.insert(scopes.begin(), PairScope{});
  return check_scopes([&](const Requests &requests) { return ask_pair(runner, requests); }, scopes,
                      runner.scenario.twins, nullptr);
}

// --- steps ---

// Give a request what an earlier step has saved, on this switch or else on the other.
void complete(const Runner &runner, const Step &step, std::size_t which, Request &request) {
  auto *rebuild = std::get_if<Rebuild>(&request.asked);
  if (rebuild == nullptr) return;
  for (const std::size_t i : {which, 1 - which}) {
    const auto found = runner.saved[i].find(step.rebuilt_from);
    if (found == runner.saved[i].end()) continue;
    rebuild->array = found->second;
    return;
  }
}

void do_requests(Runner &runner, const Step &step, Json &told) {
  told["switches"] = Json::object();
  for (Requests requests : step.requests) {
    for (std::size_t i = 0; i < requests.size(); ++i) {
      if (!requests[i]) continue;
      complete(runner, step, i, *requests[i]);
      if (const auto *change = std::get_if<ChangeWorld>(&requests[i]->asked)) {
        apply(change->change, runner.now[i]);
        runner.channels.reset();
      }
    }
    const Replies replies = ask_pair(runner, requests);
    for (std::size_t i = 0; i < replies.size(); ++i) {
      if (!replies[i]) continue;
      tell_reply(*requests[i], *replies[i], runner.now[i], told["switches"][switch_names[i]]);
      if (!step.saved_as.empty()) {
        runner.saved[i][step.saved_as] = std::get<Exported>(replies[i]->said).array;
      }
    }
    worked(runner, 1);
  }
  // A command that nobody answers is told so.
  if (step.action != "command") return;
  for (Json &switched : told["switches"]) {
    if (!switched.contains("answer")) switched["answer"] = "none";
  }
}

Json do_step(Runner &runner, std::size_t position) {
  const Step &step = runner.scenario.steps[position];
  runner.at = &step;
  runner.number = position + 1;
  Json told = told_step(step, position + 1);
  if (step.check) {
    check(runner, step, told);
  } else {
    do_requests(runner, step, told);
  }
  hold(step, told);
  return told;
}

void do_steps(Runner &runner, std::size_t count, Json &outcome) {
  Requests set_up;
  for (std::size_t i = 0; i < set_up.size(); ++i) {
    set_up[i] = Request{false, SetUp{runner.scenario.settings[i]}};
  }
  ask_pair(runner, set_up);
  for (std::size_t i = 0; i < count; ++i) {
    Json told = do_step(runner, i);
    if (runner.watcher.on_step) runner.watcher.on_step(told);
    if (told.contains("checks")) outcome["agree"] = all_agree(told["checks"]);
    outcome["steps"].push_back(std::move(told));
  }
}

Json told_failure(const Runner &runner, const std::string &problem) {
  Json failed = {{"problem", problem}};
  if (runner.at != nullptr) {
    failed["step"] = runner.number;
    failed["line"] = runner.at->line;
    failed["summary"] = runner.at->summary;
  }
  return failed;
}

std::size_t work_of(const Scenario &scenario, std::size_t count) {
  std::size_t work = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Step &step = scenario.steps[i];
    work += step.requests.size() +
            (step.check ? std::max<std::size_t>(step.check->ports.size(), 1) : 0);
  }
  return work;
}

// What a run did with the first `count` steps of a scenario, then with `finish`.
Json outcome_of(const Scenario &scenario, const RunOptions &options, const Watcher &watcher,
                std::size_t count, const std::function<void(Runner &, Json &)> &finish) {
  Json outcome = {{"version", 1},
                  {"scenario", scenario.path},
                  {"title", scenario.title},
                  {"about", scenario.about},
                  {"agree", nullptr},
                  {"steps", Json::array()}};
  try {
    Runner runner{scenario, options, watcher};
    runner.work = work_of(scenario, count);
    try {
      do_steps(runner, count, outcome);
      finish(runner, outcome);
    } catch (const Interrupted &) {
      outcome["failed"] = told_failure(runner, "interrupted");
    } catch (const SwitchFailed &failure) {
      outcome["failed"] = told_failure(runner, failure.what());
    }
  } catch (const SwitchFailed &failure) {
    outcome["failed"] = {{"problem", failure.what()}};
  }
  outcome["met"] = !outcome.contains("failed") && all_hold(outcome);
  return outcome;
}

// --- what if ---

// What changes between two checks of everything.
void tell_changes(const Json &before, const Json &after, Json &told) {
  told["looked-at"] = after.size();
  told["now"] = Json::array();
  told["then"] = Json::array();
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (before[i] == after[i]) continue;
    told["now"].push_back(before[i]);
    told["then"].push_back(after[i]);
  }
}

// What a step would do on one switch: on another pair that has come as far, so that what was ordered
// to fail fails there as it would here.
Json try_step(const Scenario &scenario, std::size_t position, std::size_t which,
              const RunOptions &options, const Json &now) {
  Step step = scenario.steps[position];
  for (std::size_t i = 0; i < step.on.size(); ++i) {
    if (i == which) continue;
    step.on[i] = false;
    for (Requests &requests : step.requests) requests[i].reset();
  }
  const Watcher nobody;
  Runner runner{scenario, options, nobody};
  Json unseen = {{"steps", Json::array()}};
  do_steps(runner, position, unseen);
  Json told;
  do_requests(runner, step, told);
  Json side = std::move(told["switches"][switch_names[which]]);
  tell_changes(now, check_all(runner), side);
  return side;
}

void ask_what_if(Runner &runner, std::size_t position, Json &outcome) {
  const Step &step = runner.scenario.steps[position];
  runner.at = &step;
  runner.number = position + 1;
  Json told = told_step(step, position + 1);
  const Json now = check_all(runner);
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (!step.on[i]) continue;
    told["switches"][switch_names[i]] = try_step(runner.scenario, position, i, runner.options, now);
  }
  outcome["what_if"] = std::move(told);
}

}  // namespace

Json run(const Scenario &scenario, const RunOptions &options, const Watcher &watcher) {
  return outcome_of(scenario, options, watcher, scenario.steps.size(), [](Runner &, Json &) {});
}

Json what_if(const Scenario &scenario, std::size_t position, const RunOptions &options,
             const Watcher &watcher) {
  return outcome_of(
      scenario, options, watcher, position,
      [position](Runner &runner, Json &outcome) { ask_what_if(runner, position, outcome); });
}

}  // namespace lab
