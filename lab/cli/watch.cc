#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <list>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/commands.h"
#include "io/http.h"
#include "io/program.h"
#include "output/events.h"
#include "output/fleet_page.h"
#include "output/json.h"
#include "output/metrics.h"
#include "tasks/pair_watch.h"
#include "text/file.h"
#include "text/wait.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// The shortest time between two writes of the metrics after a change, and after mere confirmations.
constexpr auto change_metrics_interval = 500ms;
constexpr auto confirmed_metrics_interval = 30s;
// The intervals grow with the number of sources, so that requests to unchanged ones are on average
// this far apart: for the number of keys, and for all rows.
constexpr auto probe_spacing = 25ms;
constexpr auto reading_spacing = 1s;

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

ReadIntervals find_intervals(const Arguments &arguments, std::size_t pairs) {
  const auto sources = static_cast<int64_t>(2 * pairs);
  ReadIntervals intervals;
  intervals.unnotified = seconds(arguments.interval);
  intervals.probe_interval = std::clamp<Clock::duration>(sources * probe_spacing, 1s, 25s);
  intervals.notified = std::max<Clock::duration>(sources * reading_spacing, 10s);
  return intervals;
}

struct Watch;
void end_watch(Watch &watch, Status status);
void update_metrics(Watch &watch);
void summarize_pairs(Watch &watch);
void handle_events(Watch &watch, PairWatch &pair, std::vector<Event> events);

struct Watch {
  const Arguments &arguments;
  const std::vector<AcceptEntry> &accept;
  Loop loop = {};
  Admission admission{loop};
  Pool pool{loop, limits_of(arguments)};
  WatchContext context{loop,
                       admission,
                       pool,
                       {.is_strict = arguments.strict, .accept = accept},
                       limits_of(arguments),
                       {},
                       [this](PairWatch &pair, std::vector<Event> events) {
                         handle_events(*this, pair, std::move(events));
                       }};
  std::list<PairWatch> pairs = {};
  std::optional<Status> status = {};
  Timer end_timer{loop, [this] { end_watch(*this, disagreed); }};
  Timer metrics_timer{loop, [this] { update_metrics(*this); }};
  Timer summary_timer{loop, [this] { summarize_pairs(*this); }};
  TimePoint metrics_written = {};
  TimePoint metrics_due = TimePoint::max();
  std::string metrics_error = {};  // the last one, which is not printed again
  std::optional<FileWatch> output = {};
  std::optional<SignalWatch> hangup_signal = {};
  std::optional<SignalWatch> summary_signal = {};
  std::optional<HttpServer> server = {};
  std::optional<ChangeProgram> program = {};
};

void end_watch(Watch &watch, Status status) {
  if (!watch.status) watch.status = status;
  watch.loop.stop();
}

// Ends the watch on a signal or when the output is closed.
void interrupt_watch(Watch &watch) {
  end_watch(watch, watch.arguments.once_agreed ? disagreed : agreed);
}

FleetStatus find_fleet_status(Watch &watch) {
  FleetStatus fleet;
  for (PairWatch &pair : watch.pairs) fleet.push_back(pair.status());
  return fleet;
}

// Replaces the watched pairs; the watches of unchanged entries continue.
void set_pairs(Watch &watch, const std::vector<PairEntry> &entries) {
  watch.context.intervals = find_intervals(watch.arguments, entries.size());
  std::list<PairWatch> before;
  before.swap(watch.pairs);
  for (const PairEntry &entry : entries) {
    const auto same = std::ranges::find(before, entry, &PairWatch::entry);
    if (same != before.end()) {
      update_intervals(*same);
      watch.pairs.splice(watch.pairs.end(), before, same);
    } else {
      watch.pairs.emplace_back(watch.context, entry);
    }
  }
}

// --- metrics ---

// Returns the error, or "".
std::string write_fleet_metrics(Watch &watch, const FleetStatus &fleet) {
  watch.metrics_written = Clock::now();
  watch.metrics_due = TimePoint::max();
  const std::string &path = watch.arguments.metrics;
  return path.empty() ? "" : write_metrics(path, fleet);
}

// Prints an error once, and continues: it may be temporary, such as a full disk.
void update_metrics(Watch &watch) {
  const std::string error = write_fleet_metrics(watch, find_fleet_status(watch));
  if (!error.empty() && error != watch.metrics_error) print_error(error);
  watch.metrics_error = error;
}

void schedule_metrics(Watch &watch, bool is_change) {
  const Clock::duration interval =
      is_change ? Clock::duration(change_metrics_interval) : confirmed_metrics_interval;
  const TimePoint due = std::max(watch.metrics_written + interval, Clock::now());
  if (watch.arguments.metrics.empty() || due >= watch.metrics_due) return;
  watch.metrics_due = due;
  watch.metrics_timer.set(due);
}

// The watch has ended: writes metrics with all pairs unknown.
void write_unknown_metrics(Watch &watch) {
  FleetStatus fleet = find_fleet_status(watch);
  for (PairStatus &pair : fleet) {
    pair.outcome.reset();
    pair.connected = {};
  }
  write_fleet_metrics(watch, fleet);
}

// --- events ---

// Writes a text to standard output without buffering. Returns false if the reader has closed it.
bool write_stdout(std::string_view text) {
  if (write_all(STDOUT_FILENO, text).empty()) return true;
  if (errno == EPIPE) return false;
  throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

// `is_start_error`: the event ends the watch with status 2.
void print_event(Watch &watch, const Event &event, bool is_start_error) {
  const bool is_summary = event.kind == Event::Kind::summary;
  const bool is_filtered = watch.arguments.only_changes && !event.changes_outcome && !is_summary;
  if (!is_start_error && is_filtered) return;
  if (watch.program && !is_summary) watch.program->run(event.pair, format_event(event));
  if (is_start_error) print_error(describe_event(event));
  if (is_start_error && !watch.arguments.json) return;
  if (!write_stdout(watch.arguments.json ? format_event(event) : describe_event(event))) {
    interrupt_watch(watch);
  }
}

// Prints the events of a pair, and updates the confirmation times, the metrics and the status.
void handle_events(Watch &watch, PairWatch &pair, std::vector<Event> events) {
  const std::array<TimePoint, 2> checked = {snapshot_of(pair, 0).checked,
                                            snapshot_of(pair, 1).checked};
  // The verdict is confirmed when both sources have been checked since the last confirmation.
  const bool is_confirmed = checked[0] != pair.checked[0] && checked[1] != pair.checked[1];
  if (is_confirmed) pair.checked = checked;
  if (pair.outcome && (is_confirmed || !events.empty())) {
    pair.confirmed = std::chrono::system_clock::now();
  }
  if (is_confirmed || !events.empty()) schedule_metrics(watch, !events.empty());
  const bool is_first = pair.is_started && !std::exchange(pair.has_reported_start, true);
  const bool is_start_error = is_first && pair.entry.name.empty() && pair.has_start_error();
  for (Event &event : events) {
    event.pair = pair.entry.name;
    event.changes_outcome = std::exchange(pair.reported, event.outcome) != event.outcome;
    if (event.changes_outcome || pair.changed == decltype(pair.changed){}) {
      pair.changed = event.time;
    }
    print_event(watch, event, is_start_error);
    if (watch.status) return;
  }
  if (is_start_error) end_watch(watch, wrong);
  const auto is_done = [](PairWatch &other) {
    return other.outcome == Outcome::agree && other.is_current();
  };
  if (watch.arguments.once_agreed && std::ranges::all_of(watch.pairs, is_done)) {
    end_watch(watch, agreed);
  }
}

void summarize_pairs(Watch &watch) {
  Event event;
  event.kind = Event::Kind::summary;
  event.time = std::chrono::system_clock::now();
  event.fleet = find_fleet_status(watch);
  event.outcome = find_fleet_outcome(event.fleet);
  print_event(watch, event, false);
  if (watch.arguments.summary > 0) {
    watch.summary_timer.set_after(seconds(watch.arguments.summary));
  }
}

// --- the watch ---

// Ends the watch when the reader of standard output closes it. Files have no reader.
void watch_output(Watch &watch) {
  struct stat status {};
  if (fstat(STDOUT_FILENO, &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
    return;
  }
  try {
    watch.output.emplace(watch.loop, STDOUT_FILENO, [&watch] { interrupt_watch(watch); });
    watch.output->wait_for(UV_PRIORITIZED);  // errors and hang-ups are reported for any event
  } catch (const std::system_error &) {
    watch.output.reset();  // a device that cannot be polled
  }
}

// Keeps the pairs if the list has errors.
void reread_pairs(Watch &watch) {
  std::vector<SourceErrors> errors;
  const auto entries = read_watched_pairs(watch.arguments, errors);
  if (!errors.empty()) return;
  set_pairs(watch, entries);
  schedule_metrics(watch, true);
}

// Sets up the signals, timers, server and program. Throws std::runtime_error.
void set_up_watch(Watch &watch) {
  const Arguments &arguments = watch.arguments;
  watch_output(watch);
  watch.summary_signal.emplace(watch.loop, SIGUSR1, [&watch] { summarize_pairs(watch); });
  if (!arguments.pairs.empty()) {
    watch.hangup_signal.emplace(watch.loop, SIGHUP, [&watch] { reread_pairs(watch); });
  }
  if (!arguments.listen.empty()) {
    watch.server.emplace(watch.loop, arguments.listen, [&watch](const HttpRequest &request) {
      return answer_request(request, find_fleet_status(watch), std::chrono::system_clock::now());
    });
  }
  if (!arguments.on_change.empty()) {
    watch.program.emplace(watch.loop, arguments.on_change, ProgramLimits{}, print_error);
  }
  if (arguments.timeout > 0) watch.end_timer.set_after(seconds(arguments.timeout));
  if (arguments.summary > 0) watch.summary_timer.set_after(seconds(arguments.summary));
}

void run_watch(Watch &watch) {
  try {
    watch.loop.run();
  } catch (const Interrupted &) {
    interrupt_watch(watch);
  } catch (...) {
    write_unknown_metrics(watch);
    throw;
  }
  if (!watch.arguments.once_agreed || watch.status != agreed) return write_unknown_metrics(watch);
  update_metrics(watch);
  watch.pairs.clear();
  while (watch.program && !watch.program->running.empty()) {
    uv_run(&watch.loop.raw, UV_RUN_ONCE);
  }
}

// Throws std::runtime_error if an option has an unusable path.
void check_path(const std::string &path, const std::string &prefix,
                std::string (*find_problem)(const std::string &path)) {
  const std::string problem = path.empty() ? "" : find_problem(path);
  if (!problem.empty()) throw std::runtime_error(prefix + ": " + problem);
}

}  // namespace

// Watches until a signal, the end of the output, a timeout, or agreement with --once-agreed.
// Returns 0; 1 on a timeout, or without the agreement that --once-agreed waits for; 2 if a source
// of the only pair has an error or refuses access at the start.
Status execute_watch(const Arguments &arguments) {
  if (arguments.pairs.empty() && arguments.right.empty()) {
    print_error(
        "mcec-lab watch: found fewer than two sources; expected left and right, or --pairs");
    return wrong;
  }
  std::vector<SourceErrors> errors;
  const auto entries = read_watched_pairs(arguments, errors);
  const auto accept = read_accept_file(arguments.accept, errors);
  if (!errors.empty()) {
    if (arguments.json) fmt::print("{}", format_errors(errors, JsonForm::line));
    return wrong;
  }
  check_path(arguments.metrics, arguments.metrics, find_problem_of_metrics);
  check_path(arguments.on_change, "--on-change", find_program_problem);
  std::signal(SIGPIPE, SIG_IGN);
  raise_file_limit();
  Watch watch{arguments, accept};
  set_pairs(watch, entries);
  const std::string problem = write_fleet_metrics(watch, find_fleet_status(watch));
  if (!problem.empty()) throw std::runtime_error(problem);
  set_up_watch(watch);
  run_watch(watch);
  return *watch.status;
}

}  // namespace lab
