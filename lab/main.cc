// mcec-lab: two switches on one desk.

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <clocale>
#include <functional>

#include "outcome/compare.h"
#include "outcome/run.h"
#include "pair/signals.h"
#include "read/state_writer.h"
#include "show/compare.h"
#include "show/explain.h"
#include "show/show.h"
#include "standin.h"

namespace {

using namespace lab;

enum Status { agreed = 0, disagreed = 1, wrong = 2 };

struct Arguments {
  std::vector<std::string> files;
  std::string file;
  std::size_t step = 0;
  std::string what;
  bool json = false;
  bool log = false;
  bool quiet = false;
  bool no_color = false;
  bool only_different = false;
  bool fail_on_difference = false;
  // Of compare and capture.
  std::string left;
  std::string right;
  std::string format;
  bool all = false;
  std::vector<std::string> cure;  // side and file
  std::string html;

  ShowOptions show_options() const { return {standard_layout(no_color), quiet, only_different}; }
};

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

void complain(const std::string &text) {
  std::fflush(stdout);
  fmt::print(stderr, "{}\n", as_shown(text));
}

void print_json(const Json &document) {
  fmt::print("{}\n", document.dump(2));
}

// --- mistakes ---

// More than these help nobody at once.
constexpr std::size_t mistakes_told = 100;

void complain_of(const std::string &source, const Mistakes &mistakes) {
  for (std::size_t i = 0; i < std::min(mistakes.size(), mistakes_told); ++i) {
    const std::string place = place_of(mistakes[i]);
    complain(
        fmt::format("{}:{}{} {}", source, place, place.empty() ? "" : ":", text_of(mistakes[i])));
  }
  if (mistakes.size() > mistakes_told) {
    complain(fmt::format("{}: and {} mistakes more", source, mistakes.size() - mistakes_told));
  }
}

// Tell what is wrong with a scenario, in a document too when documents are wanted.
Status tell_mistakes(const std::string &source, const Mistakes &mistakes, bool json) {
  complain_of(source, mistakes);
  Json told = Json::array();
  for (std::size_t i = 0; i < std::min(mistakes.size(), mistakes_told); ++i) {
    const Mistake &mistake = mistakes[i];
    told.push_back({{"line", mistake.line},
                    {"column", mistake.column},
                    {"found", mistake.found},
                    {"expected", mistake.expected}});
  }
  if (json) print_json({{"version", 1}, {"scenario", source}, {"mistakes", told}});
  return wrong;
}

// --- run and what-if ---

// What became of an outcome: a failure is told, with the step in which it happened.
Status status_of(const Json &outcome, const Arguments &arguments) {
  if (!outcome.contains("failed")) {
    const bool differs = arguments.fail_on_difference && outcome["agree"] == false;
    return outcome["holds"] && !differs ? agreed : disagreed;
  }
  const Json &failed = outcome["failed"];
  std::string where = " ";
  if (failed.contains("step")) {
    where = fmt::format("{}: step {} ({}): ", failed["line"].get<int>(),
                        failed["step"].get<std::size_t>(), failed["summary"].get<std::string>());
  }
  complain(outcome["scenario"].get<std::string>() + ":" + where +
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
  if (!read.mistakes.empty()) return tell_mistakes(scenario.path, read.mistakes, arguments.json);
  const ShowOptions options = arguments.show_options();
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

Status run_files(const Arguments &arguments) {
  Status status = agreed;
  for (const std::string &file : arguments.files) {
    status = std::max(status, run_file(file, arguments));
    if (interrupted()) break;
  }
  return status;
}

// The steps that what-if can be asked about.
std::string steps_to_ask(const Scenario &scenario) {
  std::string numbers;
  for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
    if (!changes_settings(scenario.steps[i])) continue;
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(i + 1);
  }
  return numbers.empty() ? "none, for there is none" : numbers;
}

Status ask_what_if(const Arguments &arguments) {
  const ReadScenario read = read_scenario(arguments.file);
  const Scenario &scenario = read.scenario;
  if (!read.mistakes.empty()) return tell_mistakes(scenario.path, read.mistakes, arguments.json);
  if (arguments.step > scenario.steps.size() ||
      !changes_settings(scenario.steps[arguments.step - 1])) {
    complain(fmt::format("{}: step {} is no command and no update; expected one of {}",
                         scenario.path, arguments.step, steps_to_ask(scenario)));
    return wrong;
  }
  Progress progress;
  const Json outcome =
      what_if(scenario, arguments.step - 1, {arguments.log}, watcher_of(nullptr, progress));
  progress.clear();
  if (arguments.json) {
    print_json(outcome);
  } else if (!outcome.contains("failed")) {
    show_what_if(outcome, arguments.show_options());
  }
  return status_of(outcome, arguments);
}

// --- compare and capture ---

Format format_of(const Arguments &arguments) {
  return arguments.format == "dump"    ? Format::dump
         : arguments.format == "state" ? Format::state
                                       : Format::by_content;
}

// Tell the mistakes of some sources, in one document when documents are wanted.
Status tell_source_mistakes(const std::vector<std::pair<std::string, Mistakes>> &of_sources,
                            bool json) {
  Json told = Json::array();
  for (const auto &[source, mistakes] : of_sources) {
    complain_of(source, mistakes);
    for (const Mistake &mistake : mistakes) {
      if (told.size() == mistakes_told) break;
      told.push_back({{"source", source},
                      {"where", place_of(mistake)},
                      {"found", mistake.found},
                      {"expected", mistake.expected}});
    }
  }
  if (json) print_json({{"version", 1}, {"mistakes", told}});
  return wrong;
}

// A file is written whole, or not at all.
void write_file(const std::string &path, const std::string &text) {
  if (path == "-") {
    fmt::print("{}", text);
    return;
  }
  FILE *file = std::fopen(path.c_str(), "we");
  const bool written =
      file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const int problem = errno;
  if (file != nullptr && std::fclose(file) == 0 && written) return;
  throw std::system_error(written ? errno : problem, std::generic_category(),
                          printable(path) + " cannot be written");
}

// cure.json with a side: cure.left.json.
std::string with_side(const std::string &path, const char *side) {
  const std::size_t dot = path.rfind('.');
  const std::size_t slash = path.rfind('/');
  const bool has_ending = dot != path.npos && (slash == path.npos || dot > slash + 1);
  const std::size_t at = has_ending ? dot : path.size();
  return path.substr(0, at) + "." + side + path.substr(at);
}

Status write_cures(const Sides &sides, const Json &told, const Arguments &arguments) {
  const std::string &which = arguments.cure[0];
  if (!sides[0].rows || !sides[1].rows) {
    complain("mcec-lab compare: --cure writes patches of dumps; found a state file");
    return wrong;
  }
  const std::array<bool, 2> changes = {which != "right", which != "left"};
  const std::array<Json, 2> patches = cures(sides, told, changes);
  for (std::size_t i = 0; i < patches.size(); ++i) {
    if (!changes[i]) continue;
    const std::string path =
        which == "both" ? with_side(arguments.cure[1], switch_names[i]) : arguments.cure[1];
    write_file(path, patches[i].dump(2) + "\n");
  }
  return agreed;
}

Status compare_sides(const Arguments &arguments) {
  Sides sides;
  std::vector<std::pair<std::string, Mistakes>> mistakes;
  const std::array<std::string, 2> sources = {arguments.left, arguments.right};
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide read = read_side(sources[i], format_of(arguments));
    if (!read.mistakes.empty()) mistakes.emplace_back(read.side.source, read.mistakes);
    sides[i] = std::move(read.side);
  }
  if (!mistakes.empty()) return tell_source_mistakes(mistakes, arguments.json);
  const Json told = compare(sides);
  if (arguments.json) {
    print_json(told);
  } else {
    ShowOptions options = arguments.show_options();
    options.only_different = !arguments.all;
    show_comparison(told, options);
  }
  if (!arguments.cure.empty() && write_cures(sides, told, arguments) == wrong) return wrong;
  return told["agree"] ? agreed : disagreed;
}

Status capture(const Arguments &arguments) {
  const ReadSide read = read_side(arguments.file, format_of(arguments));
  if (!read.mistakes.empty()) {
    return tell_source_mistakes({{read.side.source, read.mistakes}}, false);
  }
  fmt::print("{}", state_file(read.side.settings));
  return agreed;
}

// --- explain and list ---

Status explain_it(const Arguments &arguments) {
  if (explain(arguments.what, standard_layout(arguments.no_color))) return agreed;
  std::vector<std::string> names = parameter_keys();
  for (const auto &more : {command_keys(), result_keys()}) {
    names.insert(names.end(), more.begin(), more.end());
  }
  complain(
      fmt::format("mcec-lab explain: found '{}'; expected a result code or its name, a "
                  "parameter or a command: {} (see mcec-lab list)",
                  printable(arguments.what), one_of(names, arguments.what)));
  return wrong;
}

Status list_all(const Arguments &arguments) {
  if (arguments.json) {
    print_json(list_json());
  } else {
    list(arguments.what, standard_layout(arguments.no_color));
  }
  return agreed;
}

// --- the command line ---

using Action = Status (*)(const Arguments &);

struct CommandLine {
  CLI::App app{"Two switches on one desk: would their type-1 spanning-tree parameters agree?",
               "mcec-lab"};
  Arguments arguments;
  Action action = nullptr;

  CLI::App *add(const char *name, const char *about, Action does) {
    CLI::App *command = app.add_subcommand(name, about);
    command->add_flag("--no-color", arguments.no_color, "no colours, as with NO_COLOR set");
    command->callback([this, does] { action = does; });
    return command;
  }
};

void add_run(CommandLine &line) {
  Arguments &arguments = line.arguments;
  CLI::App *run = line.add("run", "Run scenarios", run_files);
  run->add_option("FILE", arguments.files, "scenarios in YAML; - is standard input")->required();
  run->add_flag("--json", arguments.json, "one JSON document for each scenario");
  run->add_flag("--log", arguments.log, "show each switch's event history");
  run->add_flag("--quiet", arguments.quiet, "verdicts only");
  run->add_flag("--only-different", arguments.only_different,
                "of checks show only what does not agree");
  run->add_flag("--fail-on-difference", arguments.fail_on_difference,
                "exit status 1 when a pair disagrees at its last check");
}

void add_what_if(CommandLine &line) {
  Arguments &arguments = line.arguments;
  CLI::App *what_if = line.add(
      "what-if", "Say what a step of a scenario would put out of step, without applying it",
      ask_what_if);
  what_if->add_option("FILE", arguments.file, "a scenario in YAML; - is standard input")
      ->required();
  what_if->add_option("STEP", arguments.step, "the number of a command or update step")
      ->required()
      ->check(CLI::Range(1U, 1000000U));
  what_if->add_flag("--json", arguments.json, "a JSON document");
  what_if->add_flag("--log", arguments.log, "show the switch's event history");
}

void add_compare(CommandLine &line) {
  Arguments &arguments = line.arguments;
  CLI::App *compare = line.add(
      "compare", "Say whether two switches agree, from dumps or state files", compare_sides);
  const char *const source = "a configuration dump, a state file, or - for standard input";
  compare->add_option("LEFT", arguments.left, source)->required();
  compare->add_option("RIGHT", arguments.right, source)->required();
  compare->add_flag("--json", arguments.json, "a JSON document");
  compare->add_flag("--all", arguments.all, "show the scopes that agree, too");
  compare
      ->add_option("--cure", arguments.cure,
                   "left, right or both, and a file: write the patch that cures the pair")
      ->expected(2)
      ->type_name("SIDE FILE");
  CLI::App *capture =
      line.add("capture", "Write what a switch is set to as a state file", ::capture);
  capture->add_option("SOURCE", arguments.file, source)->required();
  for (CLI::App *command : {compare, capture}) {
    command
        ->add_option("--format", arguments.format, "dump or state, whatever the content looks like")
        ->check(CLI::IsMember({"dump", "state"}));
  }
}

void add_explain_and_list(CommandLine &line) {
  Arguments &arguments = line.arguments;
  line.add("explain", "Say what a result code, a parameter or a command means", explain_it)
      ->add_option("WHAT", arguments.what, "a code, a name or a type")
      ->required();
  CLI::App *list = line.add("list", "List the parameters and the commands", list_all);
  list->add_option("WHAT", arguments.what, "parameters or commands")
      ->check(CLI::IsMember({"parameters", "commands"}));
  list->add_flag("--json", arguments.json, "as a JSON document, with the result codes");
}

Status parse_and_do(int argc, char **argv) {
  CommandLine line;
  CLI::App &app = line.app;
  app.require_subcommand(1);
  app.failure_message([](const CLI::App *command, const CLI::Error &problem) {
    return "mcec-lab: " + printable(problem.what()) + "\nSee mcec-lab " +
           (command->get_parent() != nullptr ? command->get_name() + " " : "") + "--help.\n";
  });
  app.set_version_flag("--version", LAB_VERSION);
  app.footer(
      "Exit status: 0 all expectations hold, 1 some do not, 2 the input or the arguments are "
      "wrong.\n"
      "See mcec-lab(1).");
  add_run(line);
  add_what_if(line);
  add_compare(line);
  add_explain_and_list(line);

  std::vector<std::string> names;
  for (const CLI::App *command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
  if (argc > 1 && argv[1][0] != '-' &&
      std::find(names.begin(), names.end(), argv[1]) == names.end()) {
    complain(fmt::format("mcec-lab: found '{}'; expected {}", printable(argv[1]),
                         one_of(names, argv[1])));
    return wrong;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &problem) {
    return app.exit(problem) == 0 ? agreed : wrong;
  }
  return line.action(line.arguments);
}

// What is opened must not come to stand where a closed standard file was; what is written to one
// fails.
void keep_standard_files() {
  for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(file, F_GETFD) < 0) open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char **argv) {
  keep_standard_files();
  std::setlocale(LC_CTYPE, "");
  stop_on_signals();
  standin_reset();
  Status status = wrong;
  try {
    status = parse_and_do(argc, argv);
  } catch (const std::exception &problem) {
    fmt::print(stderr, "mcec-lab: {}\n", printable(problem.what()));
    status = wrong;
  }
  std::string why;  // what the arguments' own help prints goes the same way
  if (all_written(why)) return status;
  fmt::print(stderr, "mcec-lab: the output cannot be written: {}\n", why);
  return wrong;
}
