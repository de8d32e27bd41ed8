// The commands of mcec-lab: the arguments of each, and the exit status that it gives.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "output/style.h"
#include "report/verdict.h"
#include "text/error.h"

namespace lab {

struct RunArguments {
  std::vector<std::string> files;
  bool json = false;
  bool log = false;
  bool quiet = false;
  bool only_different = false;
  bool fail_on_difference = false;
  bool no_color = false;
};

struct WhatIfArguments {
  std::string file;
  std::size_t step = 0;
  bool json = false;
  bool log = false;
  bool no_color = false;
};

struct CompareArguments {
  std::string left;
  std::string right;
  std::string pairs;
  std::string format;
  std::pair<std::string, std::string> patch;  // a side, and a file
  std::string html;
  bool json = false;
  bool all = false;
  bool no_color = false;
};

struct CaptureArguments {
  std::string source;
  std::string format;
  bool no_color = false;
};

struct WatchArguments {
  std::string left;
  std::string right;
  double interval = 1;
  double timeout = 0;  // 0: none
  std::string metrics;
  bool json = false;
  bool once_agreed = false;
  bool no_color = false;
};

struct ExplainArguments {
  std::string what;
  bool no_color = false;
};

struct ListArguments {
  std::string what;
  bool json = false;
  bool no_color = false;
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

// A line on the standard error output.
void print_error(const std::string &text);

// What is wrong with a source; of very many errors the first, and their number.
void print_errors(const std::string &source, const InputErrors &errors);

// Write a file whole; "-" is the standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
