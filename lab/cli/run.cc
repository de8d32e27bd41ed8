#include <fmt/core.h>
#include <unistd.h>

#include <chrono>

#include "cli/commands.h"
#include "output/told.h"
#include "sonic/source.h"
#include "tasks/run.h"
#include "text/signals.h"

namespace lab {
namespace {

// A line on the terminal about a run that takes longer than two seconds.
struct Progress {
  std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point said = started;
  bool visible = false;

  void say(std::size_t done, std::size_t all) {
    using namespace std::chrono_literals;
    const auto now = std::chrono::steady_clock::now();
    if (isatty(STDERR_FILENO) != 1 || now - started < 2s || now - said < 100ms) return;
    said = now;
    visible = true;
    fmt::print(stderr, "\r{} of {} done ({} %)\033[K", done, all, all > 0 ? done * 100 / all : 100);
    std::fflush(stderr);
  }

  void clear() {
    if (visible) fmt::print(stderr, "\r\033[K");
    visible = false;
  }
};

// Tell what is wrong with a scenario, in a document too when documents are wanted.
Status print_scenario_errors(const std::string &given, const InputErrors &errors,
                             const Arguments &arguments) {
  const std::string path = hide_login(given);  // it may be a database's URL
  print_errors(path, errors);
  if (arguments.json) {
    print_json({{"version", 1}, {"scenario", path}, {"errors", errors_to_json(path, errors)}});
  }
  return wrong;
}

// What became of an outcome: a failure is told, with the step in which it happened.
Status status_of(const Json &outcome, const Arguments &arguments) {
  if (!outcome.contains("failed")) {
    const bool differs = arguments.fail_on_difference && outcome["agree"] == false;
    return outcome["met"] && !differs ? agreed : disagreed;
  }
  const Json &failed = outcome["failed"];
  std::string where = " ";
  if (failed.contains("step")) {
    where = fmt::format("{}: step {} ({}): ", failed["line"].get<int>(),
                        failed["step"].get<std::size_t>(), failed["summary"].get<std::string>());
  }
  print_error(outcome["scenario"].get<std::string>() + ":" + where +
              failed["problem"].get<std::string>());
  return wrong;
}

Watcher watcher_of(const ShowOptions *options, Progress &progress) {
  Watcher watcher;
  watcher.on_work = [&progress](std::size_t done, std::size_t all) { progress.say(done, all); };
  if (options != nullptr) {
    watcher.on_step = [options, &progress](const Json &step) {
      progress.clear();
      show_step(step, *options);
    };
  }
  return watcher;
}

Status run_file(const std::string &file, const Arguments &arguments) {
  const ReadScenario read = read_scenario(file);
  const Scenario &scenario = read.scenario;
  if (!read.errors.empty()) return print_scenario_errors(scenario.path, read.errors, arguments);
  const ShowOptions options = show_options(arguments);
  if (!arguments.json) {
    show_title({{"scenario", scenario.path}, {"title", scenario.title}, {"about", scenario.about}},
               options);
  }
  Progress progress;
  const Watcher watcher = watcher_of(arguments.json ? nullptr : &options, progress);
  const Json outcome = run(scenario, {arguments.log}, watcher);
  progress.clear();
  if (arguments.json) {
    print_json(outcome);
  } else if (!outcome.contains("failed")) {
    show_end(outcome, options);
  }
  return status_of(outcome, arguments);
}

// The steps that what-if can be asked about.
std::string steps_to_ask(const Scenario &scenario) {
  std::string numbers;
  for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
    if (!changes_settings(scenario.steps[i])) continue;
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 1);
  }
  return numbers.empty() ? "a scenario that has one" : "one of " + numbers;
}

}  // namespace

Status run_scenarios(const Arguments &arguments) {
  Status status = agreed;
  for (const std::string &file : arguments.files) {
    status = std::max(status, run_file(file, arguments));
    if (interrupted()) break;
  }
  return status;
}

Status ask_what_if(const Arguments &arguments) {
  const ReadScenario read = read_scenario(arguments.file);
  const Scenario &scenario = read.scenario;
  if (!read.errors.empty()) return print_scenario_errors(scenario.path, read.errors, arguments);
  if (arguments.step > scenario.steps.size() ||
      !changes_settings(scenario.steps[arguments.step - 1])) {
    const InputError no_step = {0, 0, "",
                                fmt::format("step {} is no command and no update", arguments.step),
                                steps_to_ask(scenario)};
    return print_scenario_errors(scenario.path, {no_step}, arguments);
  }
  Progress progress;
  const Json outcome =
      what_if(scenario, arguments.step - 1, {arguments.log}, watcher_of(nullptr, progress));
  progress.clear();
  if (arguments.json) {
    print_json(outcome);
  } else if (!outcome.contains("failed")) {
    show_what_if(outcome, show_options(arguments));
  }
  return status_of(outcome, arguments);
}

}  // namespace lab
