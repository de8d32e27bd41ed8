// The commands of mcec-lab: what each does with its arguments, and the exit status that it gives.
#pragma once

#include <string>
#include <vector>

#include "output/json.h"
#include "output/show.h"
#include "sonic/limits.h"
#include "text/error.h"

namespace lab {

// Of several, the greatest counts.
enum Status { agreed = 0, disagreed = 1, wrong = 2 };

struct Arguments {
  bool json = false;
  bool no_color = false;
  // run, what-if
  std::vector<std::string> files;
  std::string file;
  std::size_t step = 0;
  bool log = false;
  bool quiet = false;
  bool only_different = false;
  bool fail_on_difference = false;
  // compare, capture, watch
  std::string left;
  std::string right;
  std::string format;
  bool all = false;
  std::pair<std::string, std::string> fix;  // a side, and a file
  std::string html;
  std::string pairs;
  double read_timeout = 10;  // seconds
  double interval = 1;
  double timeout = 0;  // 0: none
  bool once_agreed = false;
  std::string metrics;
  // explain, list
  std::string what;
};

Status run_scenarios(const Arguments &arguments);
Status ask_what_if(const Arguments &arguments);
Status compare_sides(const Arguments &arguments);
Status compare_pairs(const Arguments &arguments);
Status capture_side(const Arguments &arguments);
Status watch_sides(const Arguments &arguments);
Status explain_it(const Arguments &arguments);
Status list_all(const Arguments &arguments);

// --- what they share ---

ShowOptions show_options(const Arguments &arguments);
ReadLimits limits_of(const Arguments &arguments);

// A line on the standard error output.
void print_error(const std::string &text);

void print_json(const Json &document);

// Tell a person what is wrong with a source; of very many errors the first, and their number.
void print_errors(const std::string &source, const InputErrors &errors);

// Write a file whole; "-" is the standard output. Throws std::runtime_error.
void write_file(const std::string &path, const std::string &text);

}  // namespace lab
