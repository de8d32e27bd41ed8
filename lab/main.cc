// mcec-lab: two switches on one desk.

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>

#include "explain.h"
#include "run.h"
#include "show.h"
#include "standin.h"
#include "wire.h"

namespace {

using namespace lab;

enum Status { all_hold = 0, some_do_not = 1, wrong = 2 };

struct Arguments {
  std::vector<std::string> files;
  std::string file;
  std::size_t step = 0;
  std::string what;
  bool json = false;
  bool log = false;
  bool quiet = false;
  bool no_color = false;
};

std::size_t terminal_width() {
  if (const char *columns = std::getenv("COLUMNS")) {
    if (const auto width = parse_number(columns)) return std::clamp(*width, 40U, 1000U);
  }
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 40) return size.ws_col;
  return 80;
}

ShowOptions show_options(const Arguments &arguments) {
  const char *no_color = std::getenv("NO_COLOR");
  const bool forbidden = arguments.no_color || (no_color != nullptr && no_color[0] != '\0');
  return {isatty(STDOUT_FILENO) == 1 && !forbidden, arguments.quiet, terminal_width()};
}

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

Status tell_mistakes(const ReadScenario &read) {
  for (const Mistake &mistake : read.mistakes) {
    fmt::print(stderr, "{}:{}:{}: {}\n", read.scenario.path, mistake.line, mistake.column,
               mistake.text);
  }
  return wrong;
}

// What became of an outcome: a failure is told, with the step in which it happened.
Status status_of(const Json &outcome) {
  if (!outcome.contains("failed")) return outcome["holds"] ? all_hold : some_do_not;
  const Json &failed = outcome["failed"];
  std::string where;
  if (failed.contains("step")) {
    where = fmt::format("{}: step {} ({}): ", failed["line"].get<int>(),
                        failed["step"].get<std::size_t>(), failed["summary"].get<std::string>());
  } else {
    where = " ";
  }
  std::fflush(stdout);
  fmt::print(stderr, "{}:{}{}\n", outcome["scenario"].get<std::string>(), where,
             failed["problem"].get<std::string>());
  return wrong;
}

Watcher watcher_of(const Arguments &arguments, const ShowOptions &options, Progress &progress) {
  Watcher watcher;
  watcher.on_work = [&progress](std::size_t done, std::size_t all) { progress.say(done, all); };
  if (!arguments.json) {
    watcher.on_step = [&options, &progress](const Json &step) {
      progress.clear();
      show_step(step, options);
    };
  }
  return watcher;
}

Status run_file(const std::string &file, const Arguments &arguments, const ShowOptions &options) {
  const ReadScenario read = read_scenario(file);
  if (!read.mistakes.empty()) return tell_mistakes(read);
  const Scenario &scenario = read.scenario;
  if (!arguments.json) {
    show_title({{"scenario", scenario.path}, {"title", scenario.title}, {"about", scenario.about}},
               options);
  }
  Progress progress;
  const Json outcome = run(scenario, {arguments.log}, watcher_of(arguments, options, progress));
  progress.clear();
  if (arguments.json) {
    fmt::print("{}\n", outcome.dump(2));
  } else if (!outcome.contains("failed")) {
    show_end(outcome, options);
  }
  return status_of(outcome);
}

Status run_files(const Arguments &arguments) {
  const ShowOptions options = show_options(arguments);
  Status status = all_hold;
  for (const std::string &file : arguments.files) {
    status = std::max(status, run_file(file, arguments, options));
    if (interrupted()) break;
  }
  return status;
}

// The steps that what-if can be asked about.
std::string command_steps(const Scenario &scenario) {
  std::string numbers;
  for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
    if (scenario.steps[i].action != "command") continue;
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 1);
  }
  return numbers.empty() ? "none, for there is none" : numbers;
}

Status ask_what_if(const Arguments &arguments) {
  const ReadScenario read = read_scenario(arguments.file);
  if (!read.mistakes.empty()) return tell_mistakes(read);
  const Scenario &scenario = read.scenario;
  if (arguments.step > scenario.steps.size() ||
      scenario.steps[arguments.step - 1].action != "command") {
    fmt::print(stderr, "{}: step {} is no command; expected one of {}\n", scenario.path,
               arguments.step, command_steps(scenario));
    return wrong;
  }
  const ShowOptions options = show_options(arguments);
  Progress progress;
  Watcher watcher = watcher_of(arguments, options, progress);
  watcher.on_step = nullptr;
  const Json outcome = what_if(scenario, arguments.step - 1, {arguments.log}, watcher);
  progress.clear();
  if (arguments.json) {
    fmt::print("{}\n", outcome.dump(2));
  } else if (!outcome.contains("failed")) {
    show_what_if(outcome, options);
  }
  return status_of(outcome);
}

Status explain_it(const Arguments &arguments) {
  if (explain(arguments.what, show_options(arguments))) return all_hold;
  fmt::print(stderr,
             "mcec-lab explain: found '{}'; expected a result code or its name, a parameter or a "
             "command (see mcec-lab list)\n",
             printable(arguments.what));
  return wrong;
}

Status list_all(const Arguments &arguments) {
  if (arguments.json) {
    fmt::print("{}\n", list_json().dump(2));
  } else {
    list(arguments.what, show_options(arguments));
  }
  return all_hold;
}

}  // namespace

int main(int argc, char **argv) {
  Arguments arguments;
  Status status = all_hold;
  CLI::App app{"Two switches on one desk: would their type-1 spanning-tree parameters agree?",
               "mcec-lab"};
  app.require_subcommand(1);
  app.failure_message([](const CLI::App *command, const CLI::Error &problem) {
    return "mcec-lab: " + std::string(problem.what()) + "\nSee mcec-lab " +
           (command->get_parent() != nullptr ? command->get_name() + " " : "") + "--help.\n";
  });
  app.set_version_flag("--version", LAB_VERSION);
  app.footer(
      "Exit status: 0 all expectations hold, 1 some do not, 2 the scenario or the arguments are "
      "wrong.\nSee mcec-lab(1).");
  const auto add_no_color = [&](CLI::App *command) {
    command->add_flag("--no-color", arguments.no_color, "no colours, as with NO_COLOR set");
  };
  const auto add_json = [&](CLI::App *command) {
    command->add_flag("--json", arguments.json, "one JSON document for each scenario");
  };

  CLI::App *run_command = app.add_subcommand("run", "Run scenarios");
  run_command->add_option("FILE", arguments.files, "scenarios in YAML")->required();
  add_json(run_command);
  run_command->add_flag("--log", arguments.log, "show each switch's event history");
  run_command->add_flag("--quiet", arguments.quiet, "verdicts only");
  add_no_color(run_command);
  run_command->callback([&] { status = run_files(arguments); });

  CLI::App *what_if_command = app.add_subcommand(
      "what-if", "Say what a command of a scenario would put out of step, without applying it");
  what_if_command->add_option("FILE", arguments.file, "a scenario in YAML")->required();
  what_if_command->add_option("STEP", arguments.step, "the number of a command step")
      ->required()
      ->check(CLI::Range(1U, 1000000U));
  add_json(what_if_command);
  what_if_command->add_flag("--log", arguments.log, "show the switch's event history");
  add_no_color(what_if_command);
  what_if_command->callback([&] { status = ask_what_if(arguments); });

  CLI::App *explain_command =
      app.add_subcommand("explain", "Say what a result code, a parameter or a command means");
  explain_command->add_option("WHAT", arguments.what, "a code, a name or a type")->required();
  add_no_color(explain_command);
  explain_command->callback([&] { status = explain_it(arguments); });

  CLI::App *list_command = app.add_subcommand("list", "List the parameters and the commands");
  list_command->add_option("WHAT", arguments.what, "parameters or commands")
      ->check(CLI::IsMember({"parameters", "commands"}));
  list_command->add_flag("--json", arguments.json, "as a JSON document, with the result codes");
  add_no_color(list_command);
  list_command->callback([&] { status = list_all(arguments); });

  std::vector<std::string> names;
  for (const CLI::App *command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
  if (argc > 1 && argv[1][0] != '-' &&
      std::find(names.begin(), names.end(), argv[1]) == names.end()) {
    fmt::print(stderr, "mcec-lab: found '{}'; expected {}\n", printable(argv[1]), one_of(names));
    return wrong;
  }
  stop_on_signals();
  standin_reset();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &problem) {
    return app.exit(problem) == 0 ? all_hold : wrong;
  } catch (const std::exception &problem) {
    fmt::print(stderr, "mcec-lab: {}\n", problem.what());
    return wrong;
  }
  return status;
}
