#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "commands/commands.h"
#include "language/text.h"
#include "language/told.h"

namespace lab {

ShowOptions show_options(const Arguments &arguments) {
  return {standard_layout(arguments.no_color), arguments.quiet, arguments.only_different};
}

void complain(const std::string &text) {
  std::fflush(stdout);
  fmt::print(stderr, "{}\n", as_shown(text));
}

void print_json(const Json &document) {
  fmt::print("{}\n", document.dump(2));
}

void complain_of(const std::string &source, const Mistakes &mistakes) {
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
  FILE *file = std::fopen(path.c_str(), "we");
  bool written = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
  int problem = errno;
  if (file != nullptr && std::fclose(file) != 0 && written) {
    written = false;
    problem = errno;
  }
  if (written) return;
  throw std::system_error(problem, std::generic_category(), path + " cannot be written");
}

}  // namespace lab
