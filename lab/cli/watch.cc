#include <fmt/core.h>

#include "cli/commands.h"
#include "cli/pair_list.h"
#include "io/program.h"
#include "output/event_json.h"
#include "output/event_text.h"
#include "output/fleet_answer.h"
#include "output/json.h"
#include "output/metrics.h"
#include "tasks/watch.h"
#include "text/file.h"

namespace lab {
namespace {

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

// A source that can be watched, or what is wrong with it.
ParsedSource read_source(const WatchArguments &arguments, const std::string &text,
                         std::optional<std::size_t> side) {
  ParsedSource parsed = parse_source(text, side);
  if (text == "-") {
    parsed.errors.push_back({0, 0, "", "can be read once only", "a database, or a file"});
  }
  if (!arguments.metrics.empty() && is_same_file(arguments.metrics, text)) {
    parsed.errors.push_back({0, 0, "", "is the file of --metrics, too", "another file"});
  }
  return parsed;
}

// The passwords of the environment are for the two sources of one pair.
WatchEntry read_entry(const WatchArguments &arguments, const PairEntry &pair,
                      const Credentials &credentials, std::vector<SourceErrors> &errors) {
  WatchEntry entry{.name = pair.name, .sources = {}, .name_space = pair.name_space};
  for (std::size_t i = 0; i < entry.sources.size(); ++i) {
    ParsedSource parsed = read_source(arguments, pair.sources[i],
                                      pair.name.empty() ? std::optional(i) : std::nullopt);
    print_errors(parsed.source.shown, parsed.errors);
    if (!parsed.errors.empty()) errors.push_back({parsed.source.shown, parsed.errors});
    entry.sources[i] = std::move(parsed.source);
    apply_credentials(credentials, entry.sources[i]);
  }
  return entry;
}

std::vector<WatchEntry> read_entries(const WatchArguments &arguments,
                                     std::vector<SourceErrors> &errors) {
  std::vector<PairEntry> pairs = {
      {.name = "", .sources = {arguments.left, arguments.right}, .name_space = {}}};
  if (!arguments.pairs.empty()) pairs = read_pairs_file(arguments.pairs, errors);
  const Credentials credentials = read_credentials_file(arguments.credentials, errors);
  std::vector<WatchEntry> entries;
  for (PairEntry &pair : pairs) {
    if (pair.name_space.empty()) pair.name_space = arguments.name_space;
    entries.push_back(read_entry(arguments, pair, credentials, errors));
  }
  return entries;
}

// Print an event; because of one that is `fatal` the watch ends with 2. false: nobody reads it.
bool print_event(const Event &event, bool is_fatal, bool json) {
  if (is_fatal) print_error(describe_event(event));
  if (!json) return is_fatal || write_out(describe_event(event));
  return write_out(format_event(event));
}

}  // namespace

Status execute(const WatchArguments &arguments) {
  if (arguments.pairs.empty() && arguments.right.empty()) {
    print_error("mcec-lab watch: found no two sources; expected left and right, or --pairs");
    return wrong;
  }
  std::vector<SourceErrors> errors;
  const auto entries = read_entries(arguments, errors);
  const auto accept = read_accept_file(arguments.accept, errors);
  if (!errors.empty()) {
    if (arguments.json) fmt::print("{}", format_errors(errors, JsonForm::line));
    return wrong;
  }
  WatchOptions options;
  options.interval = seconds(arguments.interval);
  options.once_agreed = arguments.once_agreed;
  options.limits = limits_of(arguments.read_timeout);
  options.compare.is_strict = arguments.strict;
  options.compare.accept = &accept;
  if (arguments.timeout > 0) options.timeout = seconds(arguments.timeout);
  if (arguments.summary > 0) options.summary = seconds(arguments.summary);
  options.listen = arguments.listen;
  options.answer = answer_request;
  options.print_problem = print_error;
  options.on_change = arguments.on_change;
  options.format = format_event;
  options.is_left_out = [&](const Event &event) {
    return arguments.only_changes && !event.changes_outcome && event.kind != Event::Kind::summary;
  };
  options.listener = [&](const Event &event, bool is_fatal) {
    return print_event(event, is_fatal, arguments.json);
  };
  if (!arguments.metrics.empty()) {
    options.write_metrics = [path = arguments.metrics](const FleetStatus &fleet) {
      return write_metrics(path, fleet);
    };
    const std::string problem = find_problem_of_metrics(arguments.metrics);
    if (!problem.empty()) throw std::runtime_error(arguments.metrics + ": " + problem);
  }
  if (!arguments.on_change.empty()) {
    const std::string problem = find_program_problem(arguments.on_change);
    if (!problem.empty()) throw std::runtime_error("--on-change: " + problem);
  }
  if (!arguments.pairs.empty()) {
    options.read_pairs = [&]() -> std::optional<std::vector<WatchEntry>> {
      std::vector<SourceErrors> problems;
      auto read = read_entries(arguments, problems);
      return problems.empty() ? std::optional(std::move(read)) : std::nullopt;
    };
  }
  return static_cast<Status>(watch(entries, options));
}

}  // namespace lab
