#include <fmt/core.h>
#include <unistd.h>

#include <chrono>

#include "cli/commands.h"
#include "output/json.h"
#include "output/print.h"
#include "tasks/run.h"
#include "text/wait.h"

namespace lab {
namespace {

// Prints a progress line on the terminal if a run takes longer than two seconds.
struct Progress {
  std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point printed = started;
  bool visible = false;

  void print(std::size_t done, std::size_t total) {
    using namespace std::chrono_literals;
    const auto now = std::chrono::steady_clock::now();
    if (isatty(STDERR_FILENO) != 1 || now - started < 2s || now - printed < 100ms) return;
    printed = now;
    visible = true;
    fmt::print(stderr, "\r{} of {} done ({} %)\033[K", done, total,
               total > 0 ? done * 100 / total : 100);
    std::fflush(stderr);
  }

  void clear() {
    if (visible) fmt::print(stderr, "\r\033[K");
    visible = false;
  }
};

Status print_scenario_errors(const std::string &path, const InputErrors &errors, bool json) {
  const std::string label = hide_login(path);  // the path may be the URL of a database
  print_errors(label, errors);
  if (json) fmt::print("{}", format_scenario_errors(label, errors));
  return wrong;
}

void print_failure(const RunReport &report) {
  const RunFailure &failure = *report.failure;
  const std::string where = failure.step ? fmt::format("{}: step {} ({}): ", failure.step->line,
                                                       failure.step->number, failure.step->summary)
                                         : " ";
  print_error(report.path + ":" + where + failure.problem);
}

// Prints the JSON document or the failure of a run, and returns its status.
Status end_run(const RunReport &report, const std::vector<StepReport> &steps, bool json) {
  if (json) fmt::print("{}", format_run(report, steps));
  if (report.failure) {
    print_failure(report);
    return wrong;
  }
  return is_as_expected(report) ? agreed : disagreed;
}

Status run_file(const std::string &file, const Arguments &arguments) {
  const ReadScenario read = read_scenario(file, read_source_settings);
  const Scenario &scenario = read.scenario;
  if (!read.errors.empty()) {
    return print_scenario_errors(scenario.path, read.errors, arguments.json);
  }
  const Style style{.layout = standard_layout(arguments.color),
                    .quiet = arguments.quiet,
                    .only_different = arguments.only_different};
  if (!arguments.json) print_title(scenario.path, scenario.title, scenario.about, style);
  Progress progress;
  std::vector<StepReport> steps;
  const auto on_step = [&](const StepReport &step) {
    progress.clear();
    if (arguments.json) {
      steps.push_back(step);
    } else {
      print_step(step, style);
    }
    progress.print(step.head.number, scenario.steps.size());
  };
  const RunReport report = run(scenario, {.log = arguments.log, .on_step = on_step});
  progress.clear();
  if (!arguments.json && !report.failure) print_end(report, style);
  const Status status = end_run(report, steps, arguments.json);
  const bool differs = arguments.fail_on_difference && report.agree == false;
  return status == agreed && differs ? disagreed : status;
}

// Lists the steps that what-if can try.
std::string list_changing_steps(const Scenario &scenario) {
  std::vector<std::string> numbers;
  for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
    if (changes_settings(scenario.steps[i])) numbers.push_back(std::to_string(i + 1));
  }
  return numbers.empty() ? "a scenario with such a step" : "one of " + join(numbers);
}

}  // namespace

Status execute_run(const Arguments &arguments) {
  Status status = agreed;
  for (const std::string &file : arguments.files) {
    status = std::max(status, run_file(file, arguments));
    if (interrupted()) break;
  }
  return status;
}

Status execute_what_if(const Arguments &arguments) {
  const ReadScenario read = read_scenario(arguments.file, read_source_settings);
  const Scenario &scenario = read.scenario;
  if (!read.errors.empty()) {
    return print_scenario_errors(scenario.path, read.errors, arguments.json);
  }
  if (arguments.step > scenario.steps.size() ||
      !changes_settings(scenario.steps[arguments.step - 1])) {
    InputError no_step;
    no_step.found = fmt::format("step {} is neither a command nor an update", arguments.step);
    no_step.expected = list_changing_steps(scenario);
    return print_scenario_errors(scenario.path, {no_step}, arguments.json);
  }
  const Style style{.layout = standard_layout(arguments.color)};
  Progress progress;
  std::vector<StepReport> steps;
  const auto on_step = [&](const StepReport &step) {
    steps.push_back(step);
    progress.print(step.head.number, arguments.step - 1);
  };
  const RunReport report =
      run(scenario, {.log = arguments.log, .on_step = on_step, .what_if = arguments.step - 1});
  progress.clear();
  if (!arguments.json && !report.failure) {
    for (const StepReport &step : steps) print_unmet_step(step, style);
    print_what_if(*report.what_if, style);
  }
  return end_run(report, steps, arguments.json);
}

}  // namespace lab
