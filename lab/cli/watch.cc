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

// Since metrics were written last, when something changes, and when sources are only confirmed.
constexpr auto metrics_pause = 500ms;
constexpr auto longest_metrics_pause = 30s;
// What the process does for sources that do not change grows with their number no further.
constexpr auto signs_of_life_apart = 25ms;
constexpr auto readings_apart = 1s;

Clock::duration seconds(double count) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(count));
}

ReadIntervals find_intervals(const Arguments &arguments, std::size_t pairs) {
  const auto sources = static_cast<int64_t>(2 * pairs);
  ReadIntervals intervals;
  intervals.unnotified = seconds(arguments.interval);
  intervals.sign_of_life = std::clamp<Clock::duration>(sources * signs_of_life_apart, 1s, 25s);
  intervals.notified = std::max<Clock::duration>(sources * readings_apart, 10s);
  return intervals;
}

struct Watch {
  const Arguments &arguments;
  Loop loop = {};
  Admission admission{loop};
  Pool pool;
  WatchContext context;
  std::list<PairWatch> pairs = {};
  std::optional<Status> status = {};
  Timer end_timer;
  Timer metrics_timer;
  Timer summary_timer;
  TimePoint metrics_written = {};
  TimePoint metrics_due = TimePoint::max();
  std::string metrics_problem = {};
  std::optional<FileWatch> output = {};
  std::optional<SignalWatch> hang_up = {};
  std::optional<SignalWatch> summary_signal = {};
  std::optional<HttpServer> server = {};
  std::optional<ChangeProgram> program = {};

  Watch(const Arguments &arguments, const std::vector<AcceptEntry> &accept);
};

void end(Watch &watch, Status status) {
  if (!watch.status) watch.status = status;
  watch.loop.stop();
}

// As nobody reads, or a signal asks for it.
void leave(Watch &watch) {
  end(watch, watch.arguments.once_agreed ? disagreed : agreed);
}

FleetStatus find_fleet_status(Watch &watch) {
  FleetStatus fleet;
  for (PairWatch &pair : watch.pairs) fleet.push_back(pair.status());
  return fleet;
}

// Pairs of the list that are watched already go on.
void set_pairs(Watch &watch, const std::vector<PairEntry> &entries) {
  watch.context.intervals = find_intervals(watch.arguments, entries.size());
  std::list<PairWatch> before;
  before.swap(watch.pairs);
  for (const PairEntry &entry : entries) {
    const auto same = std::find_if(before.begin(), before.end(),
                                   [&](const PairWatch &pair) { return pair.entry == entry; });
    if (same != before.end()) {
      update_intervals(*same);
      watch.pairs.splice(watch.pairs.end(), before, same);
    } else {
      watch.pairs.emplace_back(watch.context, entry);
    }
  }
}

// --- metrics ---

// What is wrong, "" when they are written.
std::string write_fleet(Watch &watch, const FleetStatus &fleet) {
  watch.metrics_written = Clock::now();
  watch.metrics_due = TimePoint::max();
  const std::string &path = watch.arguments.metrics;
  return path.empty() ? "" : write_metrics(path, fleet);
}

// A disk that is full now is no reason to end the watch; it is reported once.
void update_metrics(Watch &watch) {
  const std::string problem = write_fleet(watch, find_fleet_status(watch));
  if (!problem.empty() && problem != watch.metrics_problem) print_error(problem);
  watch.metrics_problem = problem;
}

void plan_metrics(Watch &watch, bool is_change) {
  const auto pause = is_change ? Clock::duration(metrics_pause) : longest_metrics_pause;
  const TimePoint due = std::max(watch.metrics_written + pause, Clock::now());
  if (watch.arguments.metrics.empty() || due >= watch.metrics_due) return;
  watch.metrics_due = due;
  watch.metrics_timer.set(due);
}

// Nobody looks at the pairs any more.
void mark_unwatched(Watch &watch) {
  FleetStatus fleet = find_fleet_status(watch);
  for (PairStatus &pair : fleet) {
    pair.outcome.reset();
    pair.connected = {};
  }
  write_fleet(watch, fleet);
}

// --- events ---

// Write a text to the standard output at once, past what is buffered there; false: nobody reads it.
bool write_out(std::string_view text) {
  if (write_all(STDOUT_FILENO, text).empty()) return true;
  if (errno == EPIPE) return false;
  throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

// Because of an event that `is_wrong` the watch ends with 2.
void print_event(Watch &watch, const Event &event, bool is_wrong) {
  const bool is_summary = event.kind == Event::Kind::summary;
  const bool is_left_out = watch.arguments.only_changes && !event.changes_outcome && !is_summary;
  if (!is_wrong && is_left_out) return;
  if (watch.program && !is_summary) watch.program->run(event.pair, format_event(event));
  if (is_wrong) print_error(describe_event(event));
  if (is_wrong && !watch.arguments.json) return;
  if (!write_out(watch.arguments.json ? format_event(event) : describe_event(event))) leave(watch);
}

// What has been reported of a pair, and what follows from it for the watch.
void take_events(Watch &watch, PairWatch &pair, std::vector<Event> events) {
  const std::array<TimePoint, 2> checked = {snapshot_of(pair, 0).checked,
                                            snapshot_of(pair, 1).checked};
  // A verdict holds as long as everything that is read says the same.
  const bool is_confirmed = checked[0] != pair.checked[0] && checked[1] != pair.checked[1];
  if (is_confirmed) pair.checked = checked;
  if (pair.outcome && (is_confirmed || !events.empty())) {
    pair.confirmed = std::chrono::system_clock::now();
  }
  if (is_confirmed || !events.empty()) plan_metrics(watch, !events.empty());
  const bool is_first = pair.is_open && !std::exchange(pair.has_started, pair.is_open);
  const bool is_wrong = is_first && pair.entry.name.empty() && pair.starts_wrong();
  for (Event &event : events) {
    event.pair = pair.entry.name;
    event.changes_outcome = std::exchange(pair.reported, event.outcome) != event.outcome;
    if (event.changes_outcome || pair.changed == decltype(pair.changed){}) {
      pair.changed = event.time;
    }
    print_event(watch, event, is_wrong);
    if (watch.status) return;
  }
  if (is_wrong) end(watch, wrong);
  if (!watch.arguments.once_agreed) return;
  if (std::all_of(watch.pairs.begin(), watch.pairs.end(), [](PairWatch &each) {
        return each.outcome == Outcome::agree && each.is_current();
      })) {
    end(watch, agreed);
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

// --- the whole ---

Watch::Watch(const Arguments &given, const std::vector<AcceptEntry> &accept)
    : arguments(given),
      pool(loop, limits_of(given)),
      context{loop,
              admission,
              pool,
              {.is_strict = given.strict, .accept = accept},
              limits_of(given),
              {},
              [this](PairWatch &pair, std::vector<Event> events) {
                take_events(*this, pair, std::move(events));
              }},
      end_timer(loop, [this] { end(*this, disagreed); }),
      metrics_timer(loop, [this] { update_metrics(*this); }),
      summary_timer(loop, [this] { summarize_pairs(*this); }) {}

// The output is looked at for one thing only: that its reader has gone. A file has none.
void watch_output(Watch &watch) {
  struct stat status {};
  if (fstat(STDOUT_FILENO, &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
    return;
  }
  try {
    watch.output.emplace(watch.loop, STDOUT_FILENO, [&watch] { leave(watch); });
    watch.output->wait_for(UV_PRIORITIZED);  // its end is reported in any case
  } catch (const std::system_error &) {
    watch.output.reset();  // a device
  }
}

void read_pairs_again(Watch &watch) {
  std::vector<SourceErrors> errors;
  const auto entries = read_watched_pairs(watch.arguments, errors);
  if (!errors.empty()) return;
  set_pairs(watch, entries);
  plan_metrics(watch, true);
}

// What else can happen than that a pair changes. Throws std::runtime_error.
void set_up(Watch &watch) {
  const Arguments &arguments = watch.arguments;
  watch_output(watch);
  watch.summary_signal.emplace(watch.loop, SIGUSR1, [&watch] { summarize_pairs(watch); });
  if (!arguments.pairs.empty()) {
    watch.hang_up.emplace(watch.loop, SIGHUP, [&watch] { read_pairs_again(watch); });
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
    leave(watch);
  } catch (...) {
    mark_unwatched(watch);
    throw;
  }
  if (!watch.arguments.once_agreed || watch.status != agreed) return mark_unwatched(watch);
  update_metrics(watch);
  watch.pairs.clear();
  while (watch.program && !watch.program->running.empty()) {
    uv_run(&watch.loop.raw, UV_RUN_ONCE);
  }
}

// An option with a path that cannot be used. Throws std::runtime_error.
void check_path(const std::string &path, const std::string &prefix,
                std::string (*find_problem)(const std::string &path)) {
  const std::string problem = path.empty() ? "" : find_problem(path);
  if (!problem.empty()) throw std::runtime_error(prefix + ": " + problem);
}

}  // namespace

/*
 * Watches until a signal comes, nobody reads the output, or the options say so. The exit status: 0;
 * 1 where agreement was waited for and has not come, or the time is up; 2 where a source of the
 * only pair has an error at the start, or refuses access.
 */
Status execute_watch(const Arguments &arguments) {
  if (arguments.pairs.empty() && arguments.right.empty()) {
    print_error("mcec-lab watch: found no two sources; expected left and right, or --pairs");
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
  Watch watch(arguments, accept);
  set_pairs(watch, entries);
  const std::string problem = write_fleet(watch, find_fleet_status(watch));
  if (!problem.empty()) throw std::runtime_error(problem);
  set_up(watch);
  run_watch(watch);
  return *watch.status;
}

}  // namespace lab
