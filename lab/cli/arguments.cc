#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

#include "cli/commands.h"
#include "output/layout.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr char source_help[] =
    "A dump of the configuration database, a state file, a database (redis://host, "
    "unix:///path), or - for standard input";

// Adds an option with values. Each value in `values` is a placeholder, or a choice of words:
// "dump|state".
template <class Value>
CLI::Option *add_option(CLI::App *command, const char *name, Value &value, const char *values,
                        const char *about) {
  CLI::Option *option = command->add_option(name, value, about)->option_text(values);
  const std::string first(values, std::strcspn(values, " "));
  if (first.find('|') != first.npos) {
    std::vector<std::string> words;
    for (const std::string_view word : split(first, '|')) words.emplace_back(word);
    option->check(CLI::IsMember(words).application_index(first == values ? -1 : 0));
  }
  return option;
}

CLI::App *add_command(CLI::App &app, const char *name, const char *about, Arguments &arguments,
                      Status (*execute)(const Arguments &)) {
  CLI::App *command = app.add_subcommand(name, about);
  add_option(command, "--color", arguments.color, "auto|always|never",
             "Use colors; auto, the default, uses them on a terminal unless NO_COLOR is set or "
             "TERM is dumb");
  command->callback([&arguments, execute] { arguments.execute = execute; });
  return command;
}

void add_run(CLI::App &app, Arguments &arguments) {
  CLI::App *run = add_command(
      app, "run",
      "Run scenarios, print the outcome of each step, and report expectations that are not met",
      arguments, execute_run);
  run->add_option("FILE", arguments.files, "Scenarios in YAML; - is standard input")->required();
  run->add_flag("--json", arguments.json, "Print a JSON document for each scenario");
  run->add_flag("--log", arguments.log, "Print the event history of each switch in each step");
  run->add_flag("--quiet", arguments.quiet,
                "Print verdicts without tables, and other steps only if their expectations are "
                "not met");
  run->add_flag("--only-different", arguments.only_different,
                "Print only the scopes of a check that do not agree");
  run->add_flag("--fail-on-difference", arguments.fail_on_difference,
                "Exit with status 1 if a pair disagrees at its last check");
}

void add_what_if(CLI::App &app, Arguments &arguments) {
  CLI::App *what_if = add_command(
      app, "what-if", "Show what a step of a scenario would change, without applying it", arguments,
      execute_what_if);
  what_if->add_option("FILE", arguments.file, "A scenario in YAML; - is standard input")
      ->required();
  what_if
      ->add_option("STEP", arguments.step,
                   "The number of a command or update step, from 1; the steps before it are run")
      ->required()
      ->check(CLI::Range(1U, 1000000U));
  what_if->add_flag("--json", arguments.json, "Print a JSON document");
  what_if->add_flag("--log", arguments.log, "Print the event history of each switch");
}

// CLI::Range accepts NaN, which is neither less nor greater than its limits.
std::string refuse_nan(const std::string &text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " is not a number" : "";
}

void add_seconds(CLI::App *command, const char *name, double &value, const CLI::Range &range,
                 const char *about) {
  add_option(command, name, value, "SECONDS", about)->check(range)->check(refuse_nan);
}

CLI::Option *add_format(CLI::App *command, Arguments &arguments) {
  return add_option(command, "--format", arguments.format, "dump|state",
                    "The format of the sources; the default is to detect it");
}

CLI::Option *add_credentials(CLI::App *command, Arguments &arguments) {
  return add_option(command, "--credentials", arguments.credentials, "FILE",
                    "Read logins of databases: lines of a source, a user and a password, separated "
                    "by tabs; the file must be readable by its owner only");
}

// Adds the options of all commands that read switches, and those of comparisons if it `compares`.
void add_reading(CLI::App *command, Arguments &arguments, bool compares) {
  add_option(command, "--namespace", arguments.name_space, "NAME",
             "The ASIC to read from a dump of several, for example asic0");
  if (compares) {
    add_option(command, "--accept", arguments.accept, "FILE",
               "Read a file of accepted differences");
    command->add_flag("--strict", arguments.strict, "Count a warning as disagreement");
  }
  add_seconds(command, "--read-timeout", arguments.read_timeout, CLI::Range(0.1, 3600.0),
              "The time limit for reading a database, half of it for one answer; 10 by default");
}

void add_compare(CLI::App &app, Arguments &arguments) {
  CLI::App *compare = add_command(
      app, "compare", "Compare two switches, and print where they differ and what to change",
      arguments, execute_compare);
  CLI::Option *left = compare->add_option("LEFT", arguments.left, source_help);
  CLI::Option *right = compare->add_option("RIGHT", arguments.right, source_help);
  compare->add_flag("--json", arguments.json, "Print a JSON document; with --pairs one per line");
  CLI::Option *all = compare->add_flag("--all", arguments.all,
                                       "Also print the scopes that agree, and all lists in full");
  compare->add_flag("--quiet", arguments.quiet, "Print only errors");
  CLI::Option *intended = add_option(compare, "--intended", arguments.intended, "FILE",
                                     "Compare one switch, LEFT, with its intended state")
                              ->excludes(right);
  CLI::Option *patch =
      add_option(compare, "--patch", arguments.patch, "left|right|both|actual FILE",
                 "Write the patch (RFC 6902) that makes the pair agree by changing this side; both "
                 "writes fix.left.json and fix.right.json for fix.json; actual requires --intended")
          ->type_name("SIDE FILE");
  CLI::Option *html =
      add_option(compare, "--html", arguments.html, "FILE", "Write the comparison as an HTML page");
  CLI::Option *write_accept = add_option(compare, "--write-accept", arguments.write_accept, "FILE",
                                         "Write a file that accepts the current differences");
  CLI::Option *format = add_format(compare, arguments);
  add_reading(compare, arguments, true);
  CLI::Option *pairs =
      add_option(compare, "--pairs", arguments.pairs, "FILE",
                 "Compare many pairs: each line has a name, the left and the right source, and "
                 "optionally a namespace, separated by tabs; paths are relative to FILE")
          ->excludes(left, patch, html, format, intended, write_accept, all);
  compare->add_flag("--notes", arguments.notes, "With --pairs: print the notes on each pair")
      ->needs(pairs);
  add_credentials(compare, arguments)->needs(pairs);
}

void add_capture(CLI::App &app, Arguments &arguments) {
  CLI::App *capture = add_command(
      app, "capture",
      "Write the settings of a switch as a state file, which compare and scenarios read", arguments,
      execute_capture);
  capture->add_option("SOURCE", arguments.left, source_help)->required();
  add_format(capture, arguments);
  add_reading(capture, arguments, false);
}

void add_watch(CLI::App &app, Arguments &arguments) {
  CLI::App *watch = add_command(
      app, "watch", "Watch two switches, or many pairs, and report the effect of each change",
      arguments, execute_watch);
  CLI::Option *left = watch->add_option("LEFT", arguments.left, "A database, or a file");
  CLI::Option *right = watch->add_option("RIGHT", arguments.right, "A database, or a file");
  add_option(watch, "--pairs", arguments.pairs, "FILE",
             "Watch many pairs: a file as for compare --pairs, read again on SIGHUP")
      ->excludes(left, right);
  add_credentials(watch, arguments);
  watch->add_flag("--json", arguments.json, "Print one JSON document per line");
  watch->add_flag("--only-changes", arguments.only_changes,
                  "Print only events that change the verdict of a pair");
  add_seconds(watch, "--summary", arguments.summary, CLI::Range(0.1, 1e9),
              "The time between two summaries of all pairs; SIGUSR1 also prints one");
  add_option(watch, "--on-change", arguments.on_change, "PROGRAM",
             "Run a program on each event, with the event on its standard input");
  add_option(watch, "--listen", arguments.listen, "ADDRESS:PORT",
             "Serve the state of all pairs as a page, and metrics at /metrics");
  add_seconds(watch, "--interval", arguments.interval, CLI::Range(0.05, 86400.0),
              "The time between two readings of a file, or of a database without notifications; 1 "
              "by default");
  watch->add_flag("--once-agreed", arguments.once_agreed,
                  "End with status 0 as soon as the pair agrees; incomplete is not enough");
  add_seconds(watch, "--timeout", arguments.timeout, CLI::Range(0.001, 1e9),
              "End with status 1 after this time");
  add_option(watch, "--metrics", arguments.metrics, "FILE",
             "Write the metrics to a file for the textfile collector of Prometheus");
  add_reading(watch, arguments, true);
}

void add_explain_and_list(CLI::App &app, Arguments &arguments) {
  add_command(
      app, "explain",
      "Explain a result code, a parameter, a command, or a table or field of a configuration, and "
      "the effect of a difference",
      arguments, execute_explain)
      ->add_option("WHAT", arguments.what, "A name or a number")
      ->required();
  CLI::App *list =
      add_command(app, "list", "List the parameters and the commands", arguments, execute_list);
  add_option(list, "WHAT", arguments.what, "parameters|commands", "List only these");
  list->add_flag("--json", arguments.json, "Print a JSON document, including the result codes");
}

std::string format_failure(const CLI::App *app, const CLI::Error &problem) {
  const auto commands = app->get_subcommands();
  return "mcec-lab: " + printable(without_passwords(problem.what())) + "\nSee mcec-lab " +
         (commands.empty() ? "" : commands[0]->get_name() + " ") + "--help.\n";
}

constexpr char footer[] =
    "Exit status: 0 the pair agrees (all expectations are met), 1 it does not, 2 the input or the "
    "arguments are wrong, 3 nothing differs, but something could not be compared.";

// Wraps long descriptions, since CLI11 does not.
void wrap_descriptions(CLI::App &app) {
  constexpr std::size_t column = 30;
  constexpr std::size_t width = 80;
  app.footer(wrap_text(footer, width) + "\nSee mcec-lab(1).");
  app.get_formatter()->column_width(column);
  for (CLI::App *command : app.get_subcommands(nullptr)) {
    command->description(wrap_text(command->get_description(), width - column));
    for (CLI::Option *option : command->get_options()) {
      option->description(wrap_text(option->get_description(), width - column));
    }
  }
}

// Removes logins from an error message that quotes arguments.
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

std::shared_ptr<CLI::App> make_parser(Arguments &arguments) {
  auto app = std::make_shared<CLI::App>(
      "Check whether the type-1 spanning-tree parameters of two switches agree", "mcec-lab");
  app->require_subcommand(1);
  app->failure_message(format_failure);
  app->set_version_flag("--version", LAB_VERSION);
  app->get_formatter()->label("TEXT", "");
  for (const auto add :
       {add_run, add_what_if, add_compare, add_capture, add_watch, add_explain_and_list}) {
    add(*app, arguments);
  }
  return app;
}

CommandLine parse_command_line(int argc, const char *const *argv) {
  CommandLine line;
  const auto app = make_parser(line.arguments);
  wrap_descriptions(*app);
  const auto names = describe_each(app->get_subcommands(nullptr),
                                   [](const CLI::App *command) { return command->get_name(); });
  if (argc > 1 && argv[1][0] != '-' &&
      std::find(names.begin(), names.end(), argv[1]) == names.end()) {
    line.error = fmt::format("mcec-lab: found '{}'; expected {}\n", hide_login(argv[1]),
                             one_of(names, argv[1]));
    return line;
  }
  try {
    app->parse(argc, argv);
  } catch (const CLI::ParseError &problem) {
    std::ostringstream help;
    std::ostringstream error;
    app->exit(problem, help, error);
    line.help = help.str();
    line.error = hide_logins(error.str(), argc, argv);
    line.arguments.execute = nullptr;
  }
  return line;
}

}  // namespace lab
