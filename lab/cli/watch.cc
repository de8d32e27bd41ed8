#include <fmt/core.h>

#include <iostream>

#include "cli/commands.h"
#include "output/event_json.h"
#include "output/event_text.h"
#include "output/json.h"
#include "output/metrics.h"
#include "tasks/side.h"
#include "tasks/watch.h"
#include "text/file.h"

namespace lab {
namespace {

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

bool read_sources(const WatchArguments &arguments, std::array<Source, 2> &sources) {
  std::vector<SourceErrors> errors;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const std::string &text = i == 0 ? arguments.left : arguments.right;
    ParsedSource parsed = parse_source(text, i);
    if (text == "-") {
      parsed.errors.push_back({0, 0, "", "can be read once only", "a database, or a file"});
    }
    if (!arguments.metrics.empty() && is_same_file(arguments.metrics, text)) {
      parsed.errors.push_back({0, 0, "", "is the file of --metrics, too", "another file"});
    }
    print_errors(parsed.source.shown, parsed.errors);
    if (!parsed.errors.empty()) errors.push_back({parsed.source.shown, parsed.errors});
    sources[i] = std::move(parsed.source);
  }
  if (arguments.json && !errors.empty()) {
    fmt::print("{}", format_errors(errors, JsonForm::line));
  }
  return errors.empty();
}

// Print an event; because of one that is `fatal` the watch ends with 2. false: nobody reads it.
bool print_event(const Event &event, bool is_fatal, bool json) {
  if (is_fatal) std::cerr << describe_event(event);
  if (!json) return is_fatal || write_out(describe_event(event));
  return write_out(format_event(event));
}

}  // namespace

Status execute(const WatchArguments &arguments) {
  std::array<Source, 2> sources;
  if (!read_sources(arguments, sources)) return wrong;
  std::vector<SourceErrors> errors;
  const auto accept = read_accept_file(arguments.accept, errors);
  if (!errors.empty()) return wrong;
  WatchOptions options;
  options.interval = seconds(arguments.interval);
  options.once_agreed = arguments.once_agreed;
  options.limits = limits_of(arguments.read_timeout);
  options.compare.is_strict = arguments.strict;
  options.compare.accept = &accept;
  if (arguments.timeout > 0) options.timeout = seconds(arguments.timeout);
  options.reader = [&](const std::string &bytes) {
    return read_text(bytes, Format::by_content, arguments.name_space);
  };
  if (!arguments.metrics.empty()) {
    options.write_metrics = [path = arguments.metrics](const PairStatus &status) {
      return write_metrics(path, status);
    };
    const std::string problem = find_problem_of_metrics(arguments.metrics);
    if (!problem.empty()) throw std::runtime_error(arguments.metrics + ": " + problem);
  }
  return static_cast<Status>(watch(sources, options, [&](const Event &event, bool is_fatal) {
    return print_event(event, is_fatal, arguments.json);
  }));
}

}  // namespace lab
