// Reads lists of pairs, and executes compare --pairs.

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <set>

#include "cli/commands.h"
#include "output/json.h"
#include "output/print.h"
#include "sonic/source.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

// --- lists of pairs ---

constexpr const char *line_form =
    "a name, the left and the right source, and optionally a namespace, separated by tabs";

std::string resolve_source(std::string_view source, const std::string &folder) {
  const bool is_absolute = source.starts_with('/') || source.find("://") != source.npos;
  return (is_absolute ? "" : folder) + std::string(source);
}

// Returns the errors of a source, also if it cannot be watched.
InputErrors find_watch_errors(const Arguments &arguments, const ParsedSource &parsed) {
  const Source &source = parsed.source;
  InputErrors errors = parsed.errors;
  if (source.kind != Source::Kind::file) return errors;
  if (source.place == "-") {
    errors.push_back({0, 0, "", "can be read only once", "a database or a file"});
  }
  if (!arguments.metrics.empty() && is_same_file(arguments.metrics, source.place)) {
    errors.push_back({0, 0, "", "is also the --metrics file", "another file"});
  }
  return errors;
}

// --- compare --pairs ---

Status status_of(const PairResult &result) {
  return result.errors.empty() ? find_status(result.report) : wrong;
}

// Prints the accepted differences that match in no pair. Returns whether there are any.
bool print_unmatched(const std::vector<AcceptEntry> &entries, const std::vector<bool> &matched,
                     const std::string &path) {
  bool has_unmatched = false;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (matched[i]) continue;
    has_unmatched = true;
    print_error(fmt::format("{}:{}: the accepted difference matches nothing", printable(path),
                            entries[i].line));
  }
  return has_unmatched;
}

// Prints each result, and collects the status and the counts of all.
struct PairsPrinter {
  const Arguments &arguments;
  Layout layout;
  Status status = agreed;
  PairCounts counts = {};
  std::vector<bool> matched;  // which accepted differences match in a pair

  void print(const PairResult &result) {
    status = worst_status(status, status_of(result));
    count_result(result, counts);
    for (std::size_t i = 0; i < result.report.matched.size(); ++i) {
      matched[i] = matched[i] || result.report.matched[i];
    }
    if (arguments.json) {
      fmt::print("{}", format_pair_result(result));
      std::fflush(stdout);
    } else if (!arguments.quiet) {
      print_pair_result(result, layout, arguments.notes);
    }
  }
};

}  // namespace

std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      const std::string &name_space, InputErrors &errors) {
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
                        "found the name '" + cut(printable(parts[0]), 64) + "' twice",
                        "a unique name"});
    } else {
      PairEntry &pair = pairs.emplace_back();
      pair.name = printable(parts[0]);
      for (std::size_t i = 0; i < pair.sources.size(); ++i) {
        pair.sources[i] =
            parse_source_argument(resolve_source(parts[i + 1], folder), std::nullopt,
                                  parts.size() == 4 ? std::string(parts[3]) : name_space);
      }
    }
  }
  if (pairs.empty() && errors.empty()) {
    errors.push_back({1, 1, "", "found no pairs", std::string("lines of ") + line_form});
  }
  return pairs;
}

std::vector<PairEntry> read_pairs_file(const std::string &path, const std::string &name_space,
                                       std::vector<SourceErrors> &source_errors) {
  InputErrors errors;
  const std::string text = read_file(path, errors);
  std::vector<PairEntry> pairs;
  if (errors.empty()) {
    pairs = read_pair_list(text, path.substr(0, path.rfind('/') + 1), name_space, errors);
  }
  report_errors(hide_login(path), std::move(errors), source_errors);
  return pairs;
}

void add_logins(const std::string &path, std::vector<PairEntry> &pairs,
                std::vector<SourceErrors> &source_errors) {
  if (path.empty()) return;
  InputErrors errors;
  const Credentials credentials = load_credentials(path, errors);
  report_errors(printable(path), std::move(errors), source_errors);
  for (PairEntry &pair : pairs) {
    for (ParsedSource &parsed : pair.sources) apply_credentials(credentials, parsed.source);
  }
}

std::vector<PairEntry> read_watched_pairs(const Arguments &arguments,
                                          std::vector<SourceErrors> &source_errors) {
  std::vector<PairEntry> pairs = {
      {.name = "",
       .sources = {parse_source_argument(arguments.left, 0, arguments.name_space),
                   parse_source_argument(arguments.right, 1, arguments.name_space)}}};
  if (!arguments.pairs.empty()) {
    pairs = read_pairs_file(arguments.pairs, arguments.name_space, source_errors);
  }
  add_logins(arguments.credentials, pairs, source_errors);
  for (const PairEntry &pair : pairs) {
    for (const ParsedSource &parsed : pair.sources) {
      report_errors(parsed.source.label, find_watch_errors(arguments, parsed), source_errors);
    }
  }
  return pairs;
}

Status compare_pairs(const Arguments &arguments) {
  std::vector<SourceErrors> errors;
  std::vector<PairEntry> pairs = read_pairs_file(arguments.pairs, arguments.name_space, errors);
  const std::size_t list_errors = errors.size();
  const auto accept = read_accept_file(arguments.accept, errors);
  add_logins(arguments.credentials, pairs, errors);
  if (!errors.empty() && arguments.json) fmt::print("{}", format_errors(errors, JsonForm::line));
  if (errors.size() > list_errors || pairs.empty()) return wrong;
  PairsPrinter printer{.arguments = arguments,
                       .layout = standard_layout(arguments.color),
                       .status = errors.empty() ? agreed : wrong,
                       .matched = std::vector<bool>(accept.size())};
  compare_all(pairs, {.is_strict = arguments.strict, .accept = accept}, limits_of(arguments),
              [&](const PairResult &result) { printer.print(result); });
  const bool has_unmatched = print_unmatched(accept, printer.matched, arguments.accept);
  if (!arguments.json && !arguments.quiet) print_pair_counts(printer.counts);
  return arguments.strict && has_unmatched ? worst_status(printer.status, disagreed)
                                           : printer.status;
}

}  // namespace lab
