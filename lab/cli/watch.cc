#include <fmt/core.h>

#include <iostream>

#include "cli/commands.h"
#include "output/event.h"
#include "output/told.h"
#include "tasks/side.h"
#include "tasks/watch.h"
#include "text/file.h"

namespace lab {
namespace {

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

}  // namespace

Status watch_sides(const Arguments &arguments) {
  std::array<Source, 2> sources;
  Json errors = Json::array();
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
    for (Json &error : errors_to_json(parsed.source.shown, parsed.errors)) {
      errors.push_back(std::move(error));
    }
    sources[i] = std::move(parsed.source);
  }
  if (!errors.empty()) {
    if (arguments.json) fmt::print("{}\n", Json({{"version", 1}, {"errors", errors}}).dump());
    return wrong;
  }
  WatchOptions options;
  options.interval = seconds(arguments.interval);
  options.once_agreed = arguments.once_agreed;
  if (arguments.timeout > 0) options.timeout = seconds(arguments.timeout);
  options.metrics = arguments.metrics;
  options.reader = [](const std::string &bytes) { return read_text(bytes, Format::by_content); };
  const int status = watch(sources, options, [&](const Json &event, bool is_wrong) {
    const std::string text = event_text(event);
    if (arguments.json) {
      if (is_wrong) std::cerr << text;
      return write_out(event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    }
    if (!is_wrong) return write_out(text);
    std::cerr << text;
    return true;
  });
  return static_cast<Status>(status);
}

}  // namespace lab
