// The commands of mcec-lab: the arguments of each, and the exit status that it gives.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "output/layout.h"
#include "report/acceptance.h"
#include "report/pairs.h"
#include "report/verdict.h"
#include "sonic/credentials.h"
#include "sonic/limits.h"
#include "text/error.h"

namespace lab {

struct RunArguments {
  std::vector<std::string> files;
  bool json = false;
  bool log = false;
  bool quiet = false;
  bool only_different = false;
  bool fail_on_difference = false;
  std::string color = "auto";
};

struct WhatIfArguments {
  std::string file;
  std::size_t step = 0;
  bool json = false;
  bool log = false;
  std::string color = "auto";
};

struct CompareArguments {
  std::string left;
  std::string right;
  std::string intended;
  std::string pairs;
  std::string credentials;
  std::string format;
  std::string name_space;
  std::pair<std::string, std::string> patch;  // a side, and a file
  std::string html;
  std::string accept;
  std::string write_accept;
  double read_timeout = 10;  // seconds
  bool strict = false;
  bool notes = false;
  bool json = false;
  bool all = false;
  bool quiet = false;
  std::string color = "auto";
};

struct CaptureArguments {
  std::string source;
  std::string format;
  std::string name_space;
  double read_timeout = 10;
  std::string color = "auto";
};

struct WatchArguments {
  std::string left;
  std::string right;
  std::string pairs;
  std::string credentials;
  std::string on_change;  // a program
  std::string listen;
  double interval = 1;
  double timeout = 0;  // 0: none
  double summary = 0;  // 0: none
  double read_timeout = 10;
  std::string metrics;
  std::string accept;
  std::string name_space;
  bool strict = false;
  bool json = false;
  bool once_agreed = false;
  bool only_changes = false;
  std::string color = "auto";
};

struct ExplainArguments {
  std::string what;
  std::string color = "auto";
};

struct ListArguments {
  std::string what;
  bool json = false;
  std::string color = "auto";
};

using Arguments = std::variant<std::monostate, RunArguments, WhatIfArguments, CompareArguments,
                               CaptureArguments, WatchArguments, ExplainArguments, ListArguments>;

Status execute(const RunArguments &arguments);
Status execute(const WhatIfArguments &arguments);
Status execute(const CompareArguments &arguments);
Status execute(const CaptureArguments &arguments);
Status execute(const WatchArguments &arguments);
Status execute(const ExplainArguments &arguments);
Status execute(const ListArguments &arguments);

// compare with --pairs.
Status compare_pairs(const CompareArguments &arguments);

// --- what they share ---

ReadLimits limits_of(double read_timeout);

// The entries of a file of accepted differences, none without a path. Its errors are printed, and
// added to those of the sources.
std::vector<AcceptEntry> read_accept_file(const std::string &path,
                                          std::vector<SourceErrors> &source_errors);

// The logins of a file, none without a path. Errors as above.
Credentials read_credentials_file(const std::string &path,
                                  std::vector<SourceErrors> &source_errors);

// A line on the standard error output.
void print_error(const std::string &text);

// What is wrong with a source; of very many errors the first, and their number.
void print_errors(const std::string &source, const InputErrors &errors);

// Write a file whole; "-" is the standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
