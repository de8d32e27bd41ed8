// The commands of mcec-lab and their arguments.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "report/acceptance.h"
#include "report/verdict.h"
#include "tasks/compare.h"

namespace CLI {
class App;
}

namespace lab {

// The arguments of all commands. An option has the same meaning in each command.
struct Arguments {
  Status (*execute)(const Arguments &arguments) = nullptr;  // nullptr: no command
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
  std::string left;  // of capture: the only source
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
  std::pair<std::string, std::string> patch;  // side and file
  std::string html;
  std::string write_accept;
  bool notes = false;
  bool all = false;

  // watch
  std::string on_change;  // a program
  std::string listen;
  std::string metrics;
  double interval = 1;  // seconds
  double timeout = 0;   // seconds; 0: none
  double summary = 0;   // seconds; 0: none
  bool once_agreed = false;
  bool only_changes = false;
};

// --- the command line ---
//
// arguments.cc defines the options for the parser, --help, the manual page and the completion.

// A command with its arguments, a help text, or an error.
struct CommandLine {
  Arguments arguments;
  std::string help;
  std::string error;
};

// Parses the arguments of main().
CommandLine parse_command_line(int argc, const char *const *argv);

// Returns a parser that sets `arguments`, which must outlive it.
std::shared_ptr<CLI::App> make_parser(Arguments &arguments);

// --- the commands ---

// Each returns the exit status.
Status execute_run(const Arguments &arguments);
Status execute_what_if(const Arguments &arguments);
Status execute_compare(const Arguments &arguments);
Status execute_capture(const Arguments &arguments);
Status execute_watch(const Arguments &arguments);
Status execute_explain(const Arguments &arguments);
Status execute_list(const Arguments &arguments);

// Executes compare with --pairs.
Status compare_pairs(const Arguments &arguments);

// --- shared by the commands ---

ReadLimits limits_of(const Arguments &arguments);

// The functions that read files report errors with report_errors(); errors in lists of pairs and in
// credentials quote no text of the file, which may contain a password.

// Reads a file of accepted differences. Returns no entries if the path is empty.
std::vector<AcceptEntry> read_accept_file(const std::string &path,
                                          std::vector<SourceErrors> &source_errors);

// Parses a list of pairs: lines of a name, the left and the right source and, optionally, the
// namespace of their dumps (default: `name_space`), separated by tabs. Paths of sources are
// relative to `folder`, which ends with a slash or is empty. The passwords in the environment are
// not used: they belong to two known servers, a list can name any.
std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      const std::string &name_space, InputErrors &errors);

// Reads a list of pairs from a file.
std::vector<PairEntry> read_pairs_file(const std::string &path, const std::string &name_space,
                                       std::vector<SourceErrors> &source_errors);

// Adds the logins in a file of credentials to the sources. Does nothing if the path is empty.
void add_logins(const std::string &path, std::vector<PairEntry> &pairs,
                std::vector<SourceErrors> &source_errors);

// Returns the pairs of a watch with their logins: those of the list, or the one of the command
// line, which uses the passwords in the environment. Also reports the errors of the sources.
std::vector<PairEntry> read_watched_pairs(const Arguments &arguments,
                                          std::vector<SourceErrors> &source_errors);

// Prints the lines of a text to standard error, without passwords.
void print_error(const std::string &text);

// Prints the errors of a source; of very many only the first, and the number of the others.
void print_errors(const std::string &source, const InputErrors &errors);

// Prints the errors of a source and, if there are any, adds them to `source_errors`.
void report_errors(const std::string &source, InputErrors errors,
                   std::vector<SourceErrors> &source_errors);

// Writes a file atomically; "-" is standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
