#include "cli/arguments.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "sonic/source.h"
#include "text/text.h"

namespace lab {
namespace {

struct Parser {
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

void add_run(Parser &parser) {
  Arguments &arguments = parser.arguments;
  CLI::App *run = parser.add("run", "Run scenarios", run_scenarios);
  run->add_option("FILE", arguments.files, "scenarios in YAML; - is standard input")->required();
  run->add_flag("--json", arguments.json, "one JSON document for each scenario");
  run->add_flag("--log", arguments.log, "show each switch's event history");
  run->add_flag("--quiet", arguments.quiet, "verdicts only");
  run->add_flag("--only-different", arguments.only_different,
                "of checks show only what does not agree");
  run->add_flag("--fail-on-difference", arguments.fail_on_difference,
                "exit status 1 when a pair disagrees at its last check");
}

void add_what_if(Parser &parser) {
  Arguments &arguments = parser.arguments;
  CLI::App *what_if = parser.add(
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

// Which no range keeps out, since it is neither less nor greater.
std::string refuse_nan(const std::string &text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " is no number" : "";
}

void add_read_timeout(CLI::App *command, Arguments &arguments) {
  command
      ->add_option("--read-timeout", arguments.read_timeout,
                   "seconds for reading a database, half of them for one answer; 10 by default")
      ->check(CLI::Range(0.1, 3600.0))
      ->check(refuse_nan);
}

void add_compare(Parser &parser) {
  Arguments &arguments = parser.arguments;
  CLI::App *compare =
      parser.add("compare", "Say whether two switches agree, and why not", compare_sides);
  const char *const source =
      "a configuration dump, a state file, a database (redis://host, unix:///path), or - for "
      "standard input";
  compare->add_option("LEFT", arguments.left, source);
  compare->add_option("RIGHT", arguments.right, source);
  compare->add_flag("--json", arguments.json, "a JSON document");
  compare->add_flag("--all", arguments.all, "show the scopes that agree, too");
  compare
      ->add_option("--patch", arguments.fix,
                   "write the patch that brings a side (left, right or both) into step to a file")
      ->type_name("SIDE FILE");
  compare->add_option("--html", arguments.html, "write the comparison as a page to a file");
  compare->add_option(
      "--pairs", arguments.pairs,
      "compare many pairs: a file with lines of name, left and right, separated by tabs");
  CLI::App *capture =
      parser.add("capture", "Write what a switch is set to as a state file", capture_side);
  capture->add_option("SOURCE", arguments.file, "a configuration dump, a database, or a state file")
      ->required();
  for (CLI::App *command : {compare, capture}) {
    command
        ->add_option("--format", arguments.format, "dump or state, whatever the content looks like")
        ->check(CLI::IsMember({"dump", "state"}));
    add_read_timeout(command, arguments);
  }
}

void add_watch(Parser &parser) {
  Arguments &arguments = parser.arguments;
  CLI::App *watch =
      parser.add("watch", "Stay beside two switches and say what changes do", watch_sides);
  watch->add_option("LEFT", arguments.left, "a database, or a file")->required();
  watch->add_option("RIGHT", arguments.right, "a database, or a file")->required();
  watch->add_flag("--json", arguments.json, "a JSON document a line");
  watch
      ->add_option("--interval", arguments.interval,
                   "seconds between two looks where nothing is notified; 1 unless said otherwise")
      ->check(CLI::Range(0.05, 86400.0))
      ->check(refuse_nan);
  watch->add_flag("--once-agreed", arguments.once_agreed, "end as soon as the pair agrees");
  watch->add_option("--timeout", arguments.timeout, "end after this many seconds")
      ->check(CLI::Range(0.001, 1e9))
      ->check(refuse_nan);
  watch->add_option("--metrics", arguments.metrics, "keep a file for Prometheus");
  add_read_timeout(watch, arguments);
}

void add_explain_and_list(Parser &parser) {
  Arguments &arguments = parser.arguments;
  parser.add("explain", "Say what a result code, a parameter or a command means", explain_it)
      ->add_option("WHAT", arguments.what, "a code, a name or a type")
      ->required();
  CLI::App *list = parser.add("list", "List the parameters and the commands", list_all);
  list->add_option("WHAT", arguments.what, "parameters or commands")
      ->check(CLI::IsMember({"parameters", "commands"}));
  list->add_flag("--json", arguments.json, "as a JSON document, with the result codes");
}

void add_all(Parser &parser) {
  CLI::App &app = parser.app;
  app.require_subcommand(1);
  app.failure_message([](const CLI::App *command, const CLI::Error &problem) {
    return "mcec-lab: " + printable(without_passwords(problem.what())) + "\nSee mcec-lab " +
           (command->get_subcommands().empty() ? ""
                                               : command->get_subcommands()[0]->get_name() + " ") +
           "--help.\n";
  });
  app.set_version_flag("--version", LAB_VERSION);
  app.footer(
      "Exit status: 0 all expectations hold (the pair agrees), 1 some do not, 2 the input or the "
      "arguments are wrong.\n"
      "See mcec-lab(1).");
  add_run(parser);
  add_what_if(parser);
  add_compare(parser);
  add_watch(parser);
  add_explain_and_list(parser);
}

// An error without the logins of the words that it repeats.
std::string hide_logins(std::string error, int argc, const char *const *argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = printable(argv[i]);
    const std::string hidden = hide_login(argv[i]);
    if (hidden == word) continue;
    for (std::size_t at = 0; (at = error.find(word, at)) != error.npos; at += hidden.size()) {
      error.replace(at, word.size(), hidden);
    }
  }
  return error;
}

}  // namespace

Line parse_line(int argc, const char *const *argv) {
  Parser parser;
  add_all(parser);
  Line line;
  std::vector<std::string> names;
  for (const CLI::App *command : parser.app.get_subcommands(nullptr)) {
    names.push_back(command->get_name());
  }
  if (argc > 1 && argv[1][0] != '-' &&
      std::find(names.begin(), names.end(), argv[1]) == names.end()) {
    line.error = fmt::format("mcec-lab: found '{}'; expected {}\n", hide_login(argv[1]),
                             one_of(names, argv[1]));
    return line;
  }
  try {
    parser.app.parse(argc, argv);
    line.action = parser.action;
    line.arguments = std::move(parser.arguments);
  } catch (const CLI::ParseError &problem) {
    std::ostringstream help;
    std::ostringstream error;
    parser.app.exit(problem, help, error);
    line.help = help.str();
    line.error = hide_logins(error.str(), argc, argv);
  }
  return line;
}

}  // namespace lab
