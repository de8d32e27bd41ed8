// compare --pairs.

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>

#include "cli/commands.h"
#include "cli/pair_list.h"
#include "output/json.h"
#include "output/print.h"
#include "tasks/pairs.h"
#include "text/text.h"

namespace lab {
namespace {

Status status_of(const PairResult &result) {
  return result.errors.empty() ? find_status(result.report) : wrong;
}

// Entries of accepted differences that match in no pair.
void print_unmatched(const std::vector<AcceptEntry> &entries, const std::vector<bool> &matched,
                     const std::string &path) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (matched[i]) continue;
    print_error(fmt::format("{}:{}: the accepted difference matches nothing", printable(path),
                            entries[i].line));
  }
}

// Prints each result, and counts.
struct PairsPrinter {
  const Arguments &arguments;
  Layout layout;
  Status status = agreed;
  PairCounts counts = {};
  std::vector<bool> matched;  // by entry

  void print(const PairResult &result) {
    status = worst_status(status, status_of(result));
    count_result(result, counts);
    for (std::size_t i = 0; i < result.matched.size(); ++i) {
      matched[i] = matched[i] || result.matched[i];
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
  print_unmatched(accept, printer.matched, arguments.accept);
  if (!arguments.json && !arguments.quiet) print_pair_counts(printer.counts);
  const bool has_unmatched =
      std::find(printer.matched.begin(), printer.matched.end(), false) != printer.matched.end();
  return arguments.strict && has_unmatched ? worst_status(printer.status, disagreed)
                                           : printer.status;
}

}  // namespace lab
