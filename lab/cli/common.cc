#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "cli/commands.h"
#include "output/told.h"
#include "sonic/source.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {

ShowOptions show_options(const Arguments &arguments) {
  return {standard_layout(arguments.no_color), arguments.quiet, arguments.only_different};
}

void print_error(const std::string &text) {
  std::fflush(stdout);
  // Where even this cannot be written, the exit status has to say it.
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    line = as_shown(without_passwords(line)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
  }
}

void print_json(const Json &document) {
  fmt::print("{}\n", document.dump(2));
}

void print_errors(const std::string &source, const InputErrors &errors) {
  for (std::size_t i = 0; i < std::min(errors.size(), printed_errors); ++i) {
    const std::string place = place_of(errors[i]);
    print_error(
        fmt::format("{}:{}{} {}", source, place, place.empty() ? "" : ":", text_of(errors[i])));
  }
  if (errors.size() > printed_errors) {
    print_error(fmt::format("{}: and {} errors more", source, errors.size() - printed_errors));
  }
}

void write_file(const std::string &path, const std::string &text) {
  if (path == "-") return fmt::print("{}", text);
  const std::string problem = write_file_atomically(path, text);
  if (!problem.empty()) throw std::runtime_error(path + " cannot be written: " + problem);
}

}  // namespace lab
