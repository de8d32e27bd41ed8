// The commands of mcec-lab: their arguments, and the exit status that each gives.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "output/layout.h"
#include "report/acceptance.h"
#include "report/verdict.h"
#include "tasks/compare.h"

namespace CLI {
class App;
}

namespace lab {

// The arguments of all commands: an option of one name has one meaning.
struct Arguments {
  Status (*execute)(const Arguments &arguments) = nullptr;  // nullptr: there is no command
  std::string color = "auto";
  bool json = false;
  bool quiet = false;

  // run, what-if
  std::vector<std::string> files;
  std::string file;
  std::size_t step = 0;
  bool log = false;
  bool only_different = false;
  bool fail_on_difference = false;

  // explain, list
  std::string what;

  // compare, capture, watch
  std::string left;  // or the only source
  std::string right;
  std::string pairs;
  std::string credentials;
  std::string format;
  std::string name_space;
  double read_timeout = 10;  // seconds
  std::string accept;
  bool strict = false;

  // compare
  std::string intended;
  std::pair<std::string, std::string> patch;  // a side, and a file
  std::string html;
  std::string write_accept;
  bool notes = false;
  bool all = false;

  // watch
  std::string on_change;  // a program
  std::string listen;
  std::string metrics;
  double interval = 1;
  double timeout = 0;  // 0: none
  double summary = 0;  // 0: none
  bool once_agreed = false;
  bool only_changes = false;
};

// --- the command line, in arguments.cc: the options exist there only, for the parser, --help, the
// manual page and the completion ---

// Either a command with its arguments, help that was asked for, or what is wrong.
struct CommandLine {
  Arguments arguments;
  std::string help;
  std::string error;
};

// Parses the arguments of main; nothing is executed.
CommandLine parse_command_line(int argc, const char *const *argv);

// A parser that fills in the arguments, which outlive it.
std::shared_ptr<CLI::App> make_parser(Arguments &arguments);

// --- the commands ---

Status execute_run(const Arguments &arguments);
Status execute_what_if(const Arguments &arguments);
Status execute_compare(const Arguments &arguments);
Status execute_capture(const Arguments &arguments);
Status execute_watch(const Arguments &arguments);
Status execute_explain(const Arguments &arguments);
Status execute_list(const Arguments &arguments);

// compare with --pairs.
Status compare_pairs(const Arguments &arguments);

// --- what they share ---

ReadLimits limits_of(const Arguments &arguments);

// The entries of a file of accepted differences, none without a path. Its errors are printed, and
// added to those of the sources.
std::vector<AcceptEntry> read_accept_file(const std::string &path,
                                          std::vector<SourceErrors> &source_errors);

// A list of pairs: lines of a name, the left and the right source and, if need be, the namespace of
// their dumps, separated by tabs. Sources are relative to `folder`, which ends with a slash or is
// empty; `name_space` is that of dumps whose line has none. Errors show nothing of a line, since it
// may be a password. The passwords of the environment are for two servers, and a list may name any:
// none is sent.
std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      const std::string &name_space, InputErrors &errors);

// Those of a file. Its errors are printed, and added to those of the sources.
std::vector<PairEntry> read_pairs_file(const std::string &path, const std::string &name_space,
                                       std::vector<SourceErrors> &source_errors);

// The sources get the logins of a file, none without a path. Errors as above.
void add_logins(const std::string &path, std::vector<PairEntry> &pairs,
                std::vector<SourceErrors> &source_errors);

// The pairs that are to be watched, or the only one: the passwords of the environment are for its
// two sources. Errors as above, those of the sources, too.
std::vector<PairEntry> read_watched_pairs(const Arguments &arguments,
                                          std::vector<SourceErrors> &errors);

// A line on the standard error output.
void print_error(const std::string &text);

// What is wrong with a source; of very many errors the first, and their number.
void print_errors(const std::string &source, const InputErrors &errors);

// Prints the errors of a source, and adds them to those of all sources if there are any.
void report_errors(const std::string &source, InputErrors errors,
                   std::vector<SourceErrors> &source_errors);

// Write a file whole; "-" is the standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
