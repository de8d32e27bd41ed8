#include "cli/pair_list.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>

#include "cli/commands.h"
#include "sonic/source.h"
#include "text/file.h"
#include "text/tabbed.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr const char *line_form =
    "a name, the left and the right source (and a namespace), separated by tabs";

std::string resolve_source(std::string_view source, const std::string &folder) {
  const bool is_absolute = source.starts_with('/') || source.find("://") != source.npos;
  return (is_absolute ? "" : folder) + std::string(source);
}

}  // namespace

std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      InputErrors &errors) {
  std::vector<PairEntry> pairs;
  std::set<std::string> names;
  for (const auto &[number, parts] : read_tabbed(text)) {
    const auto empty = std::count(parts.begin(), parts.end(), "");
    if (parts.size() < 3 || parts.size() > 4 || empty > 0) {
      errors.push_back(
          {number, 1, "",
           fmt::format("found a line of {} field{}{}", parts.size(), parts.size() == 1 ? "" : "s",
                       empty > 0 ? fmt::format(", {} of them empty", empty) : ""),
           line_form});
    } else if (!names.insert(printable(parts[0])).second) {
      errors.push_back({number, 1, "",
                        "found the name '" + printable(cut(parts[0], 64)) + "' twice",
                        "a name for each pair"});
    } else {
      pairs.push_back(
          {.name = printable(parts[0]),
           .sources = {resolve_source(parts[1], folder), resolve_source(parts[2], folder)},
           .name_space = parts.size() == 4 ? std::string(parts[3]) : ""});
    }
  }
  if (pairs.empty() && errors.empty()) {
    errors.push_back({1, 1, "", "found no pair", std::string("lines of ") + line_form});
  }
  return pairs;
}

std::vector<PairEntry> read_pairs_file(const std::string &path,
                                       std::vector<SourceErrors> &source_errors) {
  InputErrors errors;
  const std::string text = read_file(path, errors);
  std::vector<PairEntry> pairs;
  if (errors.empty()) pairs = read_pair_list(text, path.substr(0, path.rfind('/') + 1), errors);
  const std::string shown = hide_login(path);
  print_errors(shown, errors);
  if (!errors.empty()) source_errors.push_back({shown, std::move(errors)});
  return pairs;
}

}  // namespace lab
