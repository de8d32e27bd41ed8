#include <fmt/core.h>

#include <iostream>

#include "commands/commands.h"
#include "language/told.h"
#include "outcome/watch.h"
#include "read/side.h"
#include "show/event.h"

namespace lab {
namespace {

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

}  // namespace

Status watch_sides(const Arguments &arguments) {
  std::array<Source, 2> sources;
  Json mistakes = Json::array();
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const std::string &text = i == 0 ? arguments.left : arguments.right;
    ParsedSource parsed = parse_source(text, i);
    if (text == "-") {
      parsed.mistakes.push_back({0, 0, "", "can be read once only", "a database, or a file"});
    }
    complain_of(parsed.source.shown, parsed.mistakes);
    for (Json &mistake : told_mistakes(parsed.source.shown, parsed.mistakes)) {
      mistakes.push_back(std::move(mistake));
    }
    sources[i] = std::move(parsed.source);
  }
  if (!mistakes.empty()) {
    if (arguments.json) fmt::print("{}\n", Json({{"version", 1}, {"mistakes", mistakes}}).dump());
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
