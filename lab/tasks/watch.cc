#include "tasks/watch.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include "sonic/database.h"
#include "tasks/events.h"
#include "text/file.h"
#include "text/wait.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// A burst is compared this long after its last change, and after its first.
constexpr auto quiet_after = 200ms;
constexpr auto at_latest = 400ms;

using Feed = std::variant<OpenDatabase, WatchedFile>;

Feed open_feed(const Source &source, const WatchOptions &options, TimePoint now) {
  if (source.kind != Source::Kind::file) {
    return open_database(source, options.interval, now, options.limits);
  }
  WatchedFile file;
  file.source = source;
  file.interval = options.interval;
  file.reader = options.reader;
  return file;
}

Snapshot &snapshot_of(Feed &feed) {
  if (auto *database = std::get_if<OpenDatabase>(&feed)) return snapshot(**database);
  return std::get<WatchedFile>(feed).snapshot;
}

void step(Feed &feed, TimePoint now) {
  if (auto *database = std::get_if<OpenDatabase>(&feed)) return step(**database, now);
  step(std::get<WatchedFile>(feed), now);
}

bool settle(Feed &feed, TimePoint now) {
  if (auto *database = std::get_if<OpenDatabase>(&feed)) return settle(**database, now);
  return settle(std::get<WatchedFile>(feed), now);
}

TimePoint due(const Feed &feed) {
  if (const auto *database = std::get_if<OpenDatabase>(&feed)) return due(**database);
  return std::get<WatchedFile>(feed).look_next;
}

// When what has changed is to be compared.
TimePoint due(const Snapshot &snapshot) {
  if (!snapshot.first_change) return TimePoint::max();
  return std::min(*snapshot.last_change + quiet_after, *snapshot.first_change + at_latest);
}

struct Watch {
  const WatchOptions &options;
  const Listener &listener;
  std::array<Feed, 2> feeds;
  SnapshotPair snapshot{};
  PairState state = {};
  bool settling = false;
  bool opened = false;  // each source has been reached once, or has not
  std::optional<int> status = {};

  std::array<TimePoint, 2> checked{};
  std::chrono::system_clock::time_point compared = {};
  std::string metrics_problem = {};
};

// What is wrong, "" when it is written, or need not be.
std::string write_metrics(const Watch &watch) {
  if (!watch.options.write_metrics) return "";
  PairStatus status{.sources = {watch.state.sides[0].source, watch.state.sides[1].source},
                    .outcome = watch.state.outcome,
                    .comparison = watch.state.comparison,
                    .compared = watch.compared};
  for (std::size_t i = 0; i < status.connected.size(); ++i) {
    status.connected[i] = watch.snapshot[i]->state == SourceState::here;
  }
  return watch.options.write_metrics(status);
}

// A disk that is full now is no reason to end the watch; it is reported once.
void update_metrics(Watch &watch) {
  const std::string problem = write_metrics(watch);
  if (!problem.empty() && problem != watch.metrics_problem) fmt::print(stderr, "{}\n", problem);
  watch.metrics_problem = problem;
}

// Nobody looks at the pair any more.
void leave(Watch &watch) {
  for (Snapshot *snapshot : watch.snapshot) snapshot->state = SourceState::lost;
  watch.state.outcome.reset();
  update_metrics(watch);
}

// What is reported, and what follows from it for the watch.
void hear(Watch &watch, const std::vector<Event> &events, bool is_wrong) {
  // A verdict holds as long as everything that is read says the same.
  std::array<TimePoint, 2> checked{};
  for (std::size_t i = 0; i < checked.size(); ++i) checked[i] = watch.snapshot[i]->checked;
  const bool confirmed = std::exchange(watch.checked, checked) != checked;
  if (watch.state.outcome && (confirmed || !events.empty())) {
    watch.compared = std::chrono::system_clock::now();
  }
  if (confirmed || !events.empty()) update_metrics(watch);
  for (const Event &event : events) {
    if (!watch.listener(event, is_wrong)) watch.status = watch.options.once_agreed ? 1 : 0;
    if (watch.status) return;
  }
  if (watch.options.once_agreed && watch.state.outcome == Outcome::agree) watch.status = 0;
}

// At the start a source that says something wrong, is not let in, or is no file ends the watch.
bool starts_wrong(const Watch &watch) {
  for (std::size_t i = 0; i < watch.snapshot.size(); ++i) {
    const Snapshot &snapshot = *watch.snapshot[i];
    const bool is_file = std::holds_alternative<WatchedFile>(watch.feeds[i]);
    if (snapshot.state == SourceState::lost && (snapshot.refused || is_file)) return true;
    if (!watch.state.states[i].errors.empty()) return true;
  }
  return false;
}

void advance(Watch &watch, TimePoint now) {
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) step(watch.feeds[i], now);
  if (!watch.opened) {
    if (std::any_of(watch.snapshot.begin(), watch.snapshot.end(), [](const Snapshot *snapshot) {
          return snapshot->state == SourceState::opening;
        })) {
      return;
    }
  }
  std::vector<Event> events = report_disconnections(watch.state, watch.snapshot);
  bool is_due = false;
  for (std::size_t i = 0; i < watch.snapshot.size(); ++i) {
    const bool is_here = watch.snapshot[i]->state == SourceState::here;
    is_due =
        is_due || (is_here && (!watch.state.states[i].connected || due(*watch.snapshot[i]) <= now));
  }
  watch.settling = watch.settling || is_due;
  if (watch.settling) {
    bool settled = true;
    for (Feed &feed : watch.feeds) settled = settle(feed, now) && settled;
    if (settled) {
      watch.settling = false;
      for (Event &event : report_disconnections(watch.state, watch.snapshot))
        events.push_back(std::move(event));
      for (Event &event : report_changes(watch.state, watch.snapshot))
        events.push_back(std::move(event));
    }
  }
  const bool is_wrong = !watch.opened && !watch.settling && starts_wrong(watch);
  watch.opened = watch.opened || !watch.settling;
  hear(watch, events, is_wrong);
  if (is_wrong) watch.status = 2;
}

void wait(Watch &watch, TimePoint until) {
  // The output is looked at for one thing only: that its reader has gone.
  std::vector<pollfd> sockets = {{STDOUT_FILENO, 0, 0}};
  for (const Feed &feed : watch.feeds) {
    until = std::min(until, due(feed));
    if (const auto *database = std::get_if<OpenDatabase>(&feed)) add_sockets(**database, sockets);
  }
  for (const Snapshot *snapshot : watch.snapshot) {
    if (watch.opened && !watch.settling && snapshot->state == SourceState::here) {
      until = std::min(until, due(*snapshot));
    }
  }
  lab::wait(sockets, until);
  if ((sockets[0].revents & POLLERR) != 0) watch.status = watch.options.once_agreed ? 1 : 0;
}

}  // namespace

int watch(const std::array<Source, 2> &sources, const WatchOptions &options,
          const Listener &listener) {
  std::signal(SIGPIPE, SIG_IGN);
  const TimePoint started = Clock::now();
  const TimePoint ends = options.timeout ? started + *options.timeout : TimePoint::max();
  Watch watch{options,
              listener,
              {open_feed(sources[0], options, started), open_feed(sources[1], options, started)}};
  for (std::size_t i = 0; i < sources.size(); ++i) watch.snapshot[i] = &snapshot_of(watch.feeds[i]);
  watch.state = make_pair_state({sources[0].shown, sources[1].shown}, options.compare);
  if (const std::string problem = write_metrics(watch); !problem.empty()) {
    throw std::runtime_error(problem);
  }
  try {
    while (!watch.status) {
      advance(watch, Clock::now());
      if (!watch.status && Clock::now() >= ends) watch.status = 1;
      if (!watch.status) wait(watch, ends);
    }
  } catch (const Interrupted &) {
    watch.status = options.once_agreed ? 1 : 0;
  } catch (...) {
    leave(watch);
    throw;
  }
  if (!(options.once_agreed && watch.status == 0)) leave(watch);
  return *watch.status;
}

bool write_out(std::string_view text) {
  if (write_all(STDOUT_FILENO, text).empty()) return true;
  if (errno == EPIPE) return false;
  throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

}  // namespace lab
