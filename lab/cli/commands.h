// The commands of mcec-lab: the arguments of each, and the exit status that it gives.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "output/layout.h"
#include "report/acceptance.h"
#include "report/pair.h"
#include "report/verdict.h"
#include "sonic/limits.h"
#include "text/error.h"

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

// A line on the standard error output.
void print_error(const std::string &text);

// What is wrong with a source; of very many errors the first, and their number.
void print_errors(const std::string &source, const InputErrors &errors);

// Write a file whole; "-" is the standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
