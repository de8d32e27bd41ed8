#include "cli/arguments.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

#include "output/layout.h"
#include "sonic/source.h"
#include "text/text.h"

namespace lab {
namespace {

struct Parser {
  CLI::App app{"Check whether the type-1 spanning-tree parameters of two switches agree",
               "mcec-lab"};
  Arguments arguments;
};

constexpr char source_help[] =
    "A dump of the configuration database, a state file, a database (redis://host, "
    "unix:///path), or - for standard input";

// An option with values. Each value is a placeholder, or the words to choose from: "dump|state".
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

// A command with a record of arguments, which outlives the parsing.
template <class Record>
Record &add_command(Parser &parser, const char *name, const char *about, CLI::App *&command) {
  command = parser.app.add_subcommand(name, about);
  const auto record = std::make_shared<Record>();
  add_option(
      command, "--color", record->color, "auto|always|never",
      "Use colours; auto, the default: on a terminal, unless NO_COLOR is set or TERM is dumb");
  command->callback([&parser, record] { parser.arguments = *record; });
  return *record;
}

void add_run(Parser &parser) {
  CLI::App *run = nullptr;
  auto &record = add_command<RunArguments>(
      parser, "run",
      "Run scenarios, print the outcome of each step, and report expectations that are not met",
      run);
  run->add_option("FILE", record.files, "Scenarios in YAML; - is standard input")->required();
  run->add_flag("--json", record.json, "Print a JSON document for each scenario");
  run->add_flag("--log", record.log, "Print the event history of each switch in each step");
  run->add_flag("--quiet", record.quiet,
                "Print verdicts without tables, and of other steps only those whose expectations "
                "are not met");
  run->add_flag("--only-different", record.only_different,
                "Of checks print only the scopes that do not agree");
  run->add_flag("--fail-on-difference", record.fail_on_difference,
                "Exit with status 1 when a pair disagrees at its last check");
}

void add_what_if(Parser &parser) {
  CLI::App *what_if = nullptr;
  auto &record = add_command<WhatIfArguments>(
      parser, "what-if", "Show what a step of a scenario would change, without applying it",
      what_if);
  what_if->add_option("FILE", record.file, "A scenario in YAML; - is standard input")->required();
  what_if
      ->add_option("STEP", record.step,
                   "The number of a command or update step, from 1; the steps "
                   "before it are run")
      ->required()
      ->check(CLI::Range(1U, 1000000U));
  what_if->add_flag("--json", record.json, "Print a JSON document");
  what_if->add_flag("--log", record.log, "Print the event history of each switch");
}

CLI::Option *add_format(CLI::App *command, std::string &format) {
  return add_option(command, "--format", format, "dump|state",
                    "Read the sources as that; without it the content decides");
}

void add_namespace(CLI::App *command, std::string &name_space) {
  add_option(command, "--namespace", name_space, "NAME",
             "Read this ASIC of dumps of several: asic0");
}

// A range does not refuse it, since it is neither less nor greater.
std::string refuse_nan(const std::string &text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " is no number" : "";
}

void add_read_timeout(CLI::App *command, double &seconds) {
  add_option(command, "--read-timeout", seconds, "SECONDS",
             "The time for reading a database, half of it for one answer; 10 by default")
      ->check(CLI::Range(0.1, 3600.0))
      ->check(refuse_nan);
}

CLI::Option *add_credentials(CLI::App *command, std::string &file) {
  return add_option(command, "--credentials", file, "FILE",
                    "Read logins of databases: lines of a source, a user and a password, separated "
                    "by tabs; only its owner may read the file");
}

void add_gate(CLI::App *command, std::string &accept, bool &strict) {
  add_option(command, "--accept", accept, "FILE", "Read a file of accepted differences");
  command->add_flag("--strict", strict, "Make the pair disagree when there is a warning");
}

void add_compare(Parser &parser) {
  CLI::App *compare = nullptr;
  auto &record = add_command<CompareArguments>(
      parser, "compare", "Compare two switches, and print where they differ and what to change",
      compare);
  CLI::Option *left = compare->add_option("LEFT", record.left, source_help);
  CLI::Option *right = compare->add_option("RIGHT", record.right, source_help);
  compare->add_flag("--json", record.json, "Print a JSON document; with --pairs one on each line");
  CLI::Option *all = compare->add_flag("--all", record.all,
                                       "Print the scopes that agree, too, and all lists in full");
  compare->add_flag("--quiet", record.quiet, "Print nothing but errors");
  CLI::Option *intended = add_option(compare, "--intended", record.intended, "FILE",
                                     "Compare one switch, LEFT, with the state that it should have")
                              ->excludes(right);
  CLI::Option *patch =
      add_option(compare, "--patch", record.patch, "left|right|both|actual FILE",
                 "Write the patch (RFC 6902) that makes the pair agree by changing this side; of "
                 "both fix.left.json and fix.right.json for fix.json; actual with --intended")
          ->type_name("SIDE FILE");
  CLI::Option *html = add_option(compare, "--html", record.html, "FILE",
                                 "Write the comparison as a page for a browser");
  CLI::Option *write_accept = add_option(compare, "--write-accept", record.write_accept, "FILE",
                                         "Write a file that accepts what differs now");
  CLI::Option *format = add_format(compare, record.format);
  add_namespace(compare, record.name_space);
  add_gate(compare, record.accept, record.strict);
  add_read_timeout(compare, record.read_timeout);
  CLI::Option *pairs =
      add_option(compare, "--pairs", record.pairs, "FILE",
                 "Compare many pairs: each line has a name, the left and the right source, and if "
                 "need be a namespace, separated by tabs; paths are relative to FILE")
          ->excludes(left, patch, html, format, intended, write_accept, all);
  compare->add_flag("--notes", record.notes, "With --pairs: print the notes on each pair")
      ->needs(pairs);
  add_credentials(compare, record.credentials)->needs(pairs);
}

void add_capture(Parser &parser) {
  CLI::App *capture = nullptr;
  auto &record = add_command<CaptureArguments>(
      parser, "capture",
      "Write the settings of a switch as a state file, which compare and scenarios read", capture);
  capture->add_option("SOURCE", record.source, source_help)->required();
  add_format(capture, record.format);
  add_namespace(capture, record.name_space);
  add_read_timeout(capture, record.read_timeout);
}

void add_watch(Parser &parser) {
  CLI::App *watch = nullptr;
  auto &record = add_command<WatchArguments>(
      parser, "watch", "Watch two switches, or many pairs, and report at once what a change does",
      watch);
  CLI::Option *left = watch->add_option("LEFT", record.left, "A database, or a file");
  CLI::Option *right = watch->add_option("RIGHT", record.right, "A database, or a file");
  add_option(watch, "--pairs", record.pairs, "FILE",
             "Watch many pairs: a file as for compare --pairs, which is read again on SIGHUP")
      ->excludes(left, right);
  add_credentials(watch, record.credentials);
  watch->add_flag("--json", record.json, "Print a JSON document on each line");
  watch->add_flag("--only-changes", record.only_changes,
                  "Print only events that change the verdict of a pair");
  add_option(watch, "--summary", record.summary, "SECONDS",
             "The time between two summaries of all pairs; one is printed on SIGUSR1, too")
      ->check(CLI::Range(0.1, 1e9))
      ->check(refuse_nan);
  add_option(watch, "--on-change", record.on_change, "PROGRAM",
             "Run a program on each event, which is its standard input");
  add_option(watch, "--listen", record.listen, "ADDRESS:PORT",
             "Serve the state of all pairs as a page, and metrics at /metrics");
  add_option(watch, "--interval", record.interval, "SECONDS",
             "The time between two readings of a file, or of a database without notifications; 1 "
             "by default")
      ->check(CLI::Range(0.05, 86400.0))
      ->check(refuse_nan);
  watch->add_flag("--once-agreed", record.once_agreed,
                  "End with status 0 as soon as the pair agrees; incomplete is not enough");
  add_option(watch, "--timeout", record.timeout, "SECONDS", "End with status 1 after this time")
      ->check(CLI::Range(0.001, 1e9))
      ->check(refuse_nan);
  add_option(watch, "--metrics", record.metrics, "FILE",
             "Keep a file for the textfile collector of Prometheus");
  add_namespace(watch, record.name_space);
  add_gate(watch, record.accept, record.strict);
  add_read_timeout(watch, record.read_timeout);
}

void add_explain_and_list(Parser &parser) {
  CLI::App *explain = nullptr;
  auto &record = add_command<ExplainArguments>(
      parser, "explain",
      "Explain a result code, a parameter, a command, or a table or field of a configuration, and "
      "what goes wrong when a parameter differs",
      explain);
  explain->add_option("WHAT", record.what, "A name or a number")->required();
  CLI::App *list = nullptr;
  auto &list_record =
      add_command<ListArguments>(parser, "list", "List the parameters and the commands", list);
  add_option(list, "WHAT", list_record.what, "parameters|commands", "List only these");
  list->add_flag("--json", list_record.json, "Print a JSON document, with the result codes, too");
}

std::string format_failure(const CLI::App *app, const CLI::Error &problem) {
  const auto commands = app->get_subcommands();
  return "mcec-lab: " + printable(without_passwords(problem.what())) + "\nSee mcec-lab " +
         (commands.empty() ? "" : commands[0]->get_name() + " ") + "--help.\n";
}

void add_all(Parser &parser) {
  CLI::App &app = parser.app;
  app.require_subcommand(1);
  app.failure_message(format_failure);
  app.set_version_flag("--version", LAB_VERSION);
  app.get_formatter()->label("TEXT", "");
  add_run(parser);
  add_what_if(parser);
  add_compare(parser);
  add_capture(parser);
  add_watch(parser);
  add_explain_and_list(parser);
}

constexpr char footer[] =
    "Exit status: 0 the pair agrees (all expectations are met), 1 it does not, 2 the input or the "
    "arguments are wrong, 3 nothing differs, but something could not be compared.";

// The program's own wrapping of help, for descriptions of any length.
void wrap_descriptions(CLI::App &app) {
  constexpr std::size_t column = 30;
  constexpr std::size_t width = 80;
  app.footer(wrapped(footer, width) + "\nSee mcec-lab(1).");
  app.get_formatter()->column_width(column);
  for (CLI::App *command : app.get_subcommands(nullptr)) {
    command->description(wrapped(command->get_description(), width - column));
    for (CLI::Option *option : command->get_options()) {
      option->description(wrapped(option->get_description(), width - column));
    }
  }
}

ArgumentDescription describe(const CLI::Option &option) {
  ArgumentDescription found{
      .name = option.get_name(),
      .values = {},
      .about = option.get_description(),
      .is_repeated = option.get_expected_max() == CLI::detail::expected_max_vector_size,
  };
  for (const std::string_view value : split(option.get_option_text(), ' ')) {
    if (!value.empty()) found.values.emplace_back(value);
  }
  return found;
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

CommandLine parse_command_line(int argc, const char *const *argv) {
  Parser parser;
  add_all(parser);
  wrap_descriptions(parser.app);
  CommandLine line;
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

std::vector<CommandDescription> describe_commands() {
  Parser parser;
  add_all(parser);
  std::vector<CommandDescription> commands;
  for (const CLI::App *app : parser.app.get_subcommands(nullptr)) {
    commands.push_back({app->get_name(), app->get_description(), {}});
    for (const CLI::Option *option : app->get_options()) {
      commands.back().arguments.push_back(describe(*option));
    }
  }
  return commands;
}

}  // namespace lab
