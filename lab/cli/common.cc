#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "cli/commands.h"
#include "output/layout.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr std::size_t max_errors = 100;
constexpr std::size_t max_error_bytes = 4000;

}  // namespace

void print_error(const std::string &text) {
  std::fflush(stdout);
  // If standard error is closed too, only the exit status reports the error.
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    line = cut(escape_for_locale(without_passwords(line)), max_error_bytes) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
  }
}

void print_errors(const std::string &source, const InputErrors &errors) {
  for (std::size_t i = 0; i < std::min(errors.size(), max_errors); ++i) {
    const std::string place = place_of(errors[i]);
    print_error(
        fmt::format("{}:{}{} {}", source, place, place.empty() ? "" : ":", error_text(errors[i])));
  }
  if (errors.size() > max_errors) {
    print_error(fmt::format("{}: {} more errors", source, errors.size() - max_errors));
  }
}

void report_errors(const std::string &source, InputErrors errors,
                   std::vector<SourceErrors> &source_errors) {
  print_errors(source, errors);
  if (!errors.empty()) source_errors.push_back({source, std::move(errors)});
}

ReadLimits limits_of(const Arguments &arguments) {
  return limits_within(std::chrono::milliseconds(std::lround(arguments.read_timeout * 1000)));
}

std::vector<AcceptEntry> read_accept_file(const std::string &path,
                                          std::vector<SourceErrors> &source_errors) {
  if (path.empty()) return {};
  InputErrors errors;
  const std::string text = read_file(path, errors);
  ReadAcceptList read;
  if (errors.empty()) {
    read = read_accept_list(text);
    errors = std::move(read.errors);
  }
  report_errors(printable(path), std::move(errors), source_errors);
  return std::move(read.entries);
}

void write_file(const std::string &path, const std::string &text) {
  if (path == "-") return fmt::print("{}", text);
  const std::string problem = write_file_atomically(path, text);
  if (!problem.empty()) throw std::runtime_error(path + " cannot be written: " + problem);
}

}  // namespace lab
