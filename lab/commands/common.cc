#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "commands/commands.h"
#include "language/file.h"
#include "language/text.h"

namespace lab {
namespace {

// More than these help nobody at once.
constexpr std::size_t mistakes_told = 100;

// What a sentence begins with, and a field of its own does not.
constexpr std::string_view found_verb = "found ";

}  // namespace

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

Json told_mistakes(const std::string &source, const Mistakes &mistakes) {
  Json told = Json::array();
  for (const Mistake &mistake : mistakes) {
    if (told.size() == mistakes_told) break;
    Json one = {{"source", source}, {"where", place_of(mistake)}};
    if (mistake.line > 0) {
      one["line"] = mistake.line;
      one["column"] = mistake.column;
    }
    const bool has_verb = mistake.found.starts_with(found_verb);
    one["found"] = mistake.found.substr(has_verb ? found_verb.size() : 0);
    one["expected"] = mistake.expected;
    told.push_back(std::move(one));
  }
  return told;
}

void write_file(const std::string &path, const std::string &text) {
  if (path == "-") return fmt::print("{}", text);
  const std::string problem = write_whole(path, text);
  if (!problem.empty()) throw std::runtime_error(path + " cannot be written: " + problem);
}

}  // namespace lab
