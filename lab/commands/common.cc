#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "commands/commands.h"
#include "language/file.h"
#include "language/text.h"
#include "language/told.h"
#include "pair/signals.h"
#include "read/source.h"

namespace lab {

ShowOptions show_options(const Arguments &arguments) {
  return {standard_layout(arguments.no_color), arguments.quiet, arguments.only_different};
}

void complain(const std::string &text) {
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

void complain_of(const std::string &source, const Mistakes &mistakes) {
  if (!mistakes.empty() && interrupted()) throw Interrupted{};  // what was read is not all there is
  for (std::size_t i = 0; i < std::min(mistakes.size(), mistakes_told); ++i) {
    const std::string place = place_of(mistakes[i]);
    complain(
        fmt::format("{}:{}{} {}", source, place, place.empty() ? "" : ":", text_of(mistakes[i])));
  }
  if (mistakes.size() > mistakes_told) {
    complain(fmt::format("{}: and {} mistakes more", source, mistakes.size() - mistakes_told));
  }
}

void write_file(const std::string &path, const std::string &text) {
  if (path == "-") return fmt::print("{}", text);
  const std::string problem = write_whole(path, text);
  if (!problem.empty()) throw std::runtime_error(path + " cannot be written: " + problem);
}

}  // namespace lab
