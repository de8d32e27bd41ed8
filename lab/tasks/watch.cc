#include "tasks/watch.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <list>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "io/program.h"
#include "output/layout.h"
#include "text/file.h"
#include "text/wait.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// Since metrics were written last, when something changes, and when sources are only confirmed.
constexpr auto metrics_pause = 500ms;
constexpr auto longest_metrics_pause = 30s;
// What the process does for sources that do not change grows with their number no further.
constexpr auto signs_of_life_apart = 15ms;
constexpr auto readings_apart = 1s;

ReadIntervals find_intervals(Clock::duration interval, std::size_t pairs) {
  const auto sources = static_cast<int64_t>(2 * pairs);
  ReadIntervals intervals;
  intervals.unnotified = interval;
  intervals.sign_of_life = std::clamp<Clock::duration>(sources * signs_of_life_apart, 1s, 15s);
  intervals.notified = std::max<Clock::duration>(sources * readings_apart, 10s);
  return intervals;
}

struct Watch {
  const WatchOptions &options;
  Loop loop = {};
  Admission admission{loop};
  Pool pool;
  WatchContext context;
  std::list<PairWatch> pairs = {};
  std::optional<int> status = {};
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

  Watch(const std::vector<WatchEntry> &entries, const WatchOptions &options);
};

void end(Watch &watch, int status) {
  if (!watch.status) watch.status = status;
  watch.loop.stop();
}

// As nobody reads, or a signal asks for it.
void leave(Watch &watch) {
  end(watch, watch.options.once_agreed ? 1 : 0);
}

FleetStatus find_fleet_status(const Watch &watch) {
  FleetStatus fleet;
  for (const PairWatch &pair : watch.pairs) fleet.push_back(pair.status());
  return fleet;
}

// --- metrics ---

std::string write_metrics(Watch &watch, const FleetStatus &fleet) {
  watch.metrics_written = Clock::now();
  watch.metrics_due = TimePoint::max();
  return watch.options.write_metrics ? watch.options.write_metrics(fleet) : "";
}

// A disk that is full now is no reason to end the watch; it is reported once.
void update_metrics(Watch &watch) {
  const std::string problem = write_metrics(watch, find_fleet_status(watch));
  if (!problem.empty() && problem != watch.metrics_problem) watch.options.print_problem(problem);
  watch.metrics_problem = problem;
}

void plan_metrics(Watch &watch, bool is_change) {
  const auto pause = is_change ? Clock::duration(metrics_pause) : longest_metrics_pause;
  const TimePoint due = std::max(watch.metrics_written + pause, Clock::now());
  if (!watch.options.write_metrics || due >= watch.metrics_due) return;
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
  write_metrics(watch, fleet);
}

// --- events ---

void report(Watch &watch, const Event &event, bool is_wrong) {
  if (!is_wrong && watch.options.is_left_out(event)) return;
  const bool is_of_pair = event.kind != Event::Kind::summary;
  if (watch.program && is_of_pair) watch.program->run(event.pair, watch.options.format(event));
  if (!watch.options.listener(event, is_wrong)) leave(watch);
}

// What has been reported of a pair, and what follows from it for the watch.
void hear(Watch &watch, PairWatch &pair, std::vector<Event> events) {
  std::array<TimePoint, 2> checked{};
  for (std::size_t i = 0; i < checked.size(); ++i) checked[i] = pair.find_checked(i);
  // A verdict holds as long as everything that is read says the same.
  const bool is_confirmed = checked[0] != pair.checked[0] && checked[1] != pair.checked[1];
  if (is_confirmed) pair.checked = checked;
  if (pair.state.outcome && (is_confirmed || !events.empty())) {
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
    report(watch, event, is_wrong);
    if (watch.status) return;
  }
  if (is_wrong) end(watch, 2);
  if (!watch.options.once_agreed) return;
  if (std::all_of(watch.pairs.begin(), watch.pairs.end(), [](const PairWatch &each) {
        return each.state.outcome == Outcome::agree && each.is_current();
      })) {
    end(watch, 0);
  }
}

void summarize_pairs(Watch &watch) {
  Event event;
  event.kind = Event::Kind::summary;
  event.time = std::chrono::system_clock::now();
  event.fleet = find_fleet_status(watch);
  event.outcome = find_fleet_outcome(event.fleet);
  report(watch, event, false);
  if (watch.options.summary) watch.summary_timer.set_after(*watch.options.summary);
}

// --- the list ---

// Pairs of the list that are watched already go on.
void set_pairs(Watch &watch, const std::vector<WatchEntry> &entries) {
  watch.context.intervals = find_intervals(watch.options.interval, entries.size());
  std::list<PairWatch> before;
  before.swap(watch.pairs);
  for (const WatchEntry &entry : entries) {
    const auto same = std::find_if(before.begin(), before.end(),
                                   [&](const PairWatch &pair) { return pair.entry == entry; });
    if (same != before.end()) {
      for (Feed &feed : same->feeds) {
        if (auto *database = std::get_if<DatabaseFeed>(&feed)) {
          set_intervals(*database->database, watch.context.intervals);
        }
      }
      watch.pairs.splice(watch.pairs.end(), before, same);
    } else {
      watch.pairs.emplace_back(watch.context, entry);
    }
  }
  plan_metrics(watch, true);
}

void read_pairs_again(Watch &watch) {
  const auto entries = watch.options.read_pairs();
  if (entries) set_pairs(watch, *entries);
}

Watch::Watch(const std::vector<WatchEntry> &entries, const WatchOptions &given)
    : options(given),
      pool(loop, given.limits, given.compare.accept),
      context{loop,
              admission,
              pool,
              given.compare,
              given.limits,
              {},
              [this](PairWatch &pair, std::vector<Event> events) {
                hear(*this, pair, std::move(events));
              }},
      end_timer(loop, [this] { end(*this, 1); }),
      metrics_timer(loop, [this] { update_metrics(*this); }),
      summary_timer(loop, [this] { summarize_pairs(*this); }) {
  set_pairs(*this, entries);
}

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

}  // namespace

int watch(const std::vector<WatchEntry> &entries, const WatchOptions &options) {
  std::signal(SIGPIPE, SIG_IGN);
  raise_file_limit();
  Watch watch(entries, options);
  if (const std::string problem = write_metrics(watch, find_fleet_status(watch));
      !problem.empty()) {
    throw std::runtime_error(problem);
  }
  watch_output(watch);
  watch.summary_signal.emplace(watch.loop, SIGUSR1, [&watch] { summarize_pairs(watch); });
  if (options.read_pairs) {
    watch.hang_up.emplace(watch.loop, SIGHUP, [&watch] { read_pairs_again(watch); });
  }
  if (!options.listen.empty()) {
    watch.server.emplace(watch.loop, options.listen, [&watch](std::string_view target) {
      return watch.options.answer(target, find_fleet_status(watch),
                                  std::chrono::system_clock::now());
    });
  }
  if (!options.on_change.empty()) {
    watch.program.emplace(watch.loop, options.on_change, ProgramLimits{}, options.print_problem);
  }
  if (options.timeout) watch.end_timer.set_after(*options.timeout);
  if (options.summary) watch.summary_timer.set_after(*options.summary);
  try {
    watch.loop.run();
  } catch (const Interrupted &) {
    leave(watch);
  } catch (...) {
    mark_unwatched(watch);
    throw;
  }
  if (options.once_agreed && watch.status == 0) {
    update_metrics(watch);
    watch.pairs.clear();
    while (watch.program && !watch.program->running.empty()) {
      uv_run(&watch.loop.raw, UV_RUN_ONCE);
    }
  } else {
    mark_unwatched(watch);
  }
  return *watch.status;
}

bool write_out(std::string_view text) {
  if (write_all(STDOUT_FILENO, text).empty()) return true;
  if (errno == EPIPE) return false;
  throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

}  // namespace lab
