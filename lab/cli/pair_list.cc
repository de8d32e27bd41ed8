#include "cli/pair_list.h"

#include <sstream>

#include "text/text.h"

namespace lab {
namespace {

constexpr const char *line_form = "a name, the left and the right source, separated by tabs";

std::string in_folder(const std::string &source, const std::string &folder) {
  const bool is_absolute = source.starts_with('/') || source.find("://") != source.npos;
  return is_absolute ? source : folder + source;
}

}  // namespace

std::vector<PairLine> read_pair_list(std::string_view text, const std::string &folder,
                                     InputErrors &errors) {
  std::vector<PairLine> pairs;
  std::istringstream lines(std::string(without_byte_order_mark(text)));
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> parts;
    std::size_t empty = 0;
    std::istringstream fields(line);
    for (std::string part; std::getline(fields, part, '\t');) {
      empty += part.empty() ? 1 : 0;
      parts.push_back(part);
    }
    if (parts.size() == 3 && empty == 0) {
      pairs.push_back(
          {printable(parts[0]), {in_folder(parts[1], folder), in_folder(parts[2], folder)}});
    } else {
      errors.push_back({number, 1, "",
                        "found a line of " + std::to_string(parts.size()) +
                            (parts.size() == 1 ? " field" : " fields") +
                            (empty > 0 ? ", " + std::to_string(empty) + " of them empty" : ""),
                        line_form});
    }
  }
  if (pairs.empty() && errors.empty()) {
    errors.push_back({1, 1, "", "found no pair", std::string("lines of ") + line_form});
  }
  return pairs;
}

}  // namespace lab
