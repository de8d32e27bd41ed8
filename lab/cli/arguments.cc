#include "cli/arguments.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <sstream>

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
    "a configuration dump, a state file, a database (redis://host, unix:///path), or - for "
    "standard "
    "input";

// A command with a record of arguments, which outlives the parsing.
template <class Record>
Record &add_command(Parser &parser, const char *name, const char *about, CLI::App *&command) {
  command = parser.app.add_subcommand(name, about);
  const auto record = std::make_shared<Record>();
  command
      ->add_option("--color", record->color,
                   "auto (on a terminal, unless NO_COLOR is set), always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  command->callback([&parser, record] { parser.arguments = *record; });
  return *record;
}

void add_run(Parser &parser) {
  CLI::App *run = nullptr;
  auto &record = add_command<RunArguments>(parser, "run", "Run scenarios", run);
  run->add_option("FILE", record.files, "scenarios in YAML; - is standard input")->required();
  run->add_flag("--json", record.json, "one JSON document for each scenario");
  run->add_flag("--log", record.log, "show each switch's event history");
  run->add_flag("--quiet", record.quiet, "verdicts only");
  run->add_flag("--only-different", record.only_different,
                "of checks show only what does not agree");
  run->add_flag("--fail-on-difference", record.fail_on_difference,
                "exit status 1 when a pair disagrees at its last check");
}

void add_what_if(Parser &parser) {
  CLI::App *what_if = nullptr;
  auto &record = add_command<WhatIfArguments>(
      parser, "what-if", "Show what a step of a scenario would change, without applying it",
      what_if);
  what_if->add_option("FILE", record.file, "a scenario in YAML; - is standard input")->required();
  what_if->add_option("STEP", record.step, "the number of a command or update step")
      ->required()
      ->check(CLI::Range(1U, 1000000U));
  what_if->add_flag("--json", record.json, "a JSON document");
  what_if->add_flag("--log", record.log, "show the switch's event history");
}

CLI::Option *add_format(CLI::App *command, std::string &format) {
  return command->add_option("--format", format, "dump or state, whatever the content looks like")
      ->check(CLI::IsMember({"dump", "state"}));
}

void add_namespace(CLI::App *command, std::string &name_space) {
  command->add_option("--namespace", name_space, "the ASIC to read from a dump of several: asic0");
}

// A range does not refuse it, since it is neither less nor greater.
std::string refuse_nan(const std::string &text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " is no number" : "";
}

void add_read_timeout(CLI::App *command, double &seconds) {
  command
      ->add_option("--read-timeout", seconds,
                   "seconds for reading a database, half of them for one answer; 10 by default")
      ->check(CLI::Range(0.1, 3600.0))
      ->check(refuse_nan);
}

void add_gate(CLI::App *command, std::string &accept, bool &strict) {
  command->add_option("--accept", accept, "a file of accepted differences");
  command->add_flag("--strict", strict, "a warning makes the pair disagree");
}

void add_compare(Parser &parser) {
  CLI::App *compare = nullptr;
  auto &record = add_command<CompareArguments>(
      parser, "compare", "Compare two switches, and say why they do not agree", compare);
  CLI::Option *left = compare->add_option("LEFT", record.left, source_help);
  CLI::Option *right = compare->add_option("RIGHT", record.right, source_help);
  compare->add_flag("--json", record.json, "a JSON document");
  CLI::Option *all = compare->add_flag("--all", record.all,
                                       "show the scopes that agree, too, and all lists in full");
  compare->add_flag("--quiet", record.quiet, "print nothing but errors");
  CLI::Option *intended = compare
                              ->add_option("--intended", record.intended,
                                           "compare one switch with the state that it should have")
                              ->excludes(right);
  CLI::Option *patch =
      compare
          ->add_option("--patch", record.patch,
                       "write the patch that brings a side (left, right or both; actual with "
                       "--intended) into line to a file")
          ->type_name("SIDE FILE")
          ->check(CLI::IsMember({"left", "right", "both", "actual"}).application_index(0));
  CLI::Option *html =
      compare->add_option("--html", record.html, "write the comparison as a page to a file");
  CLI::Option *write_accept = compare->add_option("--write-accept", record.write_accept,
                                                  "write a file that accepts what differs now");
  CLI::Option *format = add_format(compare, record.format);
  add_namespace(compare, record.name_space);
  add_gate(compare, record.accept, record.strict);
  add_read_timeout(compare, record.read_timeout);
  CLI::Option *pairs =
      compare
          ->add_option(
              "--pairs", record.pairs,
              "compare many pairs: a file with lines of name, left, right and, if need be, "
              "namespace, separated by tabs")
          ->excludes(left, patch, html, format, intended, write_accept, all);
  compare->add_flag("--notes", record.notes, "with --pairs: the notes on each pair")->needs(pairs);
}

void add_capture(Parser &parser) {
  CLI::App *capture = nullptr;
  auto &record = add_command<CaptureArguments>(
      parser, "capture", "Write the settings of a switch as a state file", capture);
  capture->add_option("SOURCE", record.source, source_help)->required();
  add_format(capture, record.format);
  add_namespace(capture, record.name_space);
  add_read_timeout(capture, record.read_timeout);
}

void add_watch(Parser &parser) {
  CLI::App *watch = nullptr;
  auto &record = add_command<WatchArguments>(
      parser, "watch", "Watch two switches, and report what changes do", watch);
  CLI::Option *left = watch->add_option("LEFT", record.left, "a database, or a file");
  CLI::Option *right = watch->add_option("RIGHT", record.right, "a database, or a file");
  watch
      ->add_option("--pairs", record.pairs,
                   "watch many pairs: a file as for compare, which is read again on SIGHUP")
      ->excludes(left, right);
  watch->add_flag("--json", record.json, "a JSON document on each line");
  watch->add_flag("--only-changes", record.only_changes, "print events that change a verdict only");
  watch
      ->add_option("--summary", record.summary,
                   "seconds between two summaries of all pairs; one is printed on SIGUSR1, too")
      ->check(CLI::Range(0.1, 1e9))
      ->check(refuse_nan);
  watch
      ->add_option("--interval", record.interval,
                   "seconds between two readings where nothing is notified; 1 by default")
      ->check(CLI::Range(0.05, 86400.0))
      ->check(refuse_nan);
  watch->add_flag("--once-agreed", record.once_agreed, "end as soon as the pair agrees");
  watch->add_option("--timeout", record.timeout, "end after this many seconds")
      ->check(CLI::Range(0.001, 1e9))
      ->check(refuse_nan);
  watch->add_option("--metrics", record.metrics, "keep a file for Prometheus");
  add_namespace(watch, record.name_space);
  add_gate(watch, record.accept, record.strict);
  add_read_timeout(watch, record.read_timeout);
}

void add_explain_and_list(Parser &parser) {
  CLI::App *explain = nullptr;
  auto &record = add_command<ExplainArguments>(
      parser, "explain", "Explain a result code, a parameter or a command", explain);
  explain->add_option("WHAT", record.what, "a code, a name or a type")->required();
  CLI::App *list = nullptr;
  auto &list_record =
      add_command<ListArguments>(parser, "list", "List the parameters and the commands", list);
  list->add_option("WHAT", list_record.what, "parameters or commands")
      ->check(CLI::IsMember({"parameters", "commands"}));
  list->add_flag("--json", list_record.json, "as a JSON document, with the result codes");
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
  app.footer(
      "Exit status: 0 the pair agrees (all expectations are met), 1 it does not, 2 the input or "
      "the "
      "arguments are wrong.\n"
      "See mcec-lab(1).");
  add_run(parser);
  add_what_if(parser);
  add_compare(parser);
  add_capture(parser);
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

CommandLine parse_command_line(int argc, const char *const *argv) {
  Parser parser;
  add_all(parser);
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

}  // namespace lab
