// compare --pairs.

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <sstream>

#include "cli/commands.h"
#include "output/error_json.h"
#include "output/pair_json.h"
#include "output/pairs_text.h"
#include "report/verdict.h"
#include "sonic/source.h"
#include "tasks/pairs.h"
#include "text/text.h"
#include "text/file.h"

namespace lab {
namespace {

constexpr const char *line_form = "a name, the left and the right source, separated by tabs";

// Sources are relative to the folder of the list.
std::string resolve_source(const std::string &source, const std::string &folder) {
  const bool is_absolute = source.starts_with('/') || source.find("://") != source.npos;
  return is_absolute ? source : folder + source;
}

std::vector<PairEntry> read_pairs(const std::string &path, InputErrors &errors) {
  std::vector<PairEntry> pairs;
  std::set<std::string> names;
  const std::string text = read_file(path, errors);
  std::istringstream lines(std::string(without_byte_order_mark(text)));
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string_view> parts = split(line, '\t');
    const bool has_empty =
        std::any_of(parts.begin(), parts.end(), [](auto part) { return part.empty(); });
    if (parts.size() != 3 || has_empty) {
      // Not a line of ours: what it contains may be a secret.
      errors.push_back({number, 1, "",
                        fmt::format("found {} part{}{}", parts.size(), parts.size() == 1 ? "" : "s",
                                    has_empty ? ", not all of them filled" : ""),
                        line_form});
    } else if (!names.emplace(parts[0]).second) {
      errors.push_back({number, 1, "", "found the name '" + printable(parts[0]) + "' twice",
                        "a name for each pair"});
    } else {
      pairs.push_back({printable(parts[0]),
                       {resolve_source(std::string(parts[1]), folder), resolve_source(std::string(parts[2]), folder)}});
    }
  }
  if (pairs.empty() && errors.empty()) {
    errors.push_back({1, 1, "", "found no pair", std::string("lines of ") + line_form});
  }
  return pairs;
}

Status status_of(const PairResult &result) {
  if (!result.errors.empty()) return wrong;
  return is_agreed(find_verdict(result.report)) ? agreed : disagreed;
}

}  // namespace

Status compare_pairs(const CompareArguments &arguments) {
  InputErrors errors;
  const std::vector<PairEntry> pairs = read_pairs(arguments.pairs, errors);
  const std::string source = printable(arguments.pairs);
  print_errors(source, errors);
  Status status = errors.empty() ? agreed : wrong;
  if (!errors.empty() && arguments.json) {
    fmt::print("{}", format_errors({{source, errors}}, JsonForm::line));
  }
  if (pairs.empty()) return wrong;
  const Layout layout = standard_layout(arguments.no_color);
  PairCounts counts;
  compare_all(pairs, [&](const PairResult &result) {
    status = std::max(status, status_of(result));
    count_result(result, counts);
    if (arguments.json) {
      fmt::print("{}", format_pair_result(result));
      std::fflush(stdout);
    } else {
      print_pair_result(result, layout);
    }
  });
  if (!arguments.json) print_pair_counts(counts);
  return status;
}

}  // namespace lab
