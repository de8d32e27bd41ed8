#include "tasks/pair_watch.h"

#include <algorithm>
#include <utility>

namespace lab {
namespace {

using namespace std::chrono_literals;

// A burst of changes is compared this long after its last change, at the latest this long after the
// first.
constexpr auto quiet_time = 200ms;
constexpr auto longest_delay = 400ms;
// A failed comparison is repeated after this time.
constexpr auto retry_delay = 5s;

void append_events(std::vector<Event> &events, std::vector<Event> more) {
  std::move(more.begin(), more.end(), std::back_inserter(events));
}

// Returns when the next comparison is due.
TimePoint find_due(PairWatch &watch) {
  TimePoint due = TimePoint::max();
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    const Snapshot &snapshot = snapshot_of(watch, i);
    if (snapshot.state != SourceState::connected) continue;
    if (!watch.sides[i].connected) return watch.not_before;
    if (!snapshot.first_change) continue;
    due =
        std::min({due, *snapshot.last_change + quiet_time, *snapshot.first_change + longest_delay});
  }
  return std::max(watch.not_before, due);
}

// A settled side remains settled until both are: later changes wait for the next comparison.
bool is_settled(PairWatch &watch) {
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    auto *database = std::get_if<DatabaseFeed>(&watch.feeds[i]);
    if (!watch.settled[i]) watch.settled[i] = database == nullptr || database->settle();
  }
  return watch.settled[0] && watch.settled[1];
}

// --- jobs ---

// Returns nullopt if no source has changed.
std::optional<CompareJob> make_job(PairWatch &watch) {
  CompareJob job{.options = watch.context.compare};
  job.options.name = watch.entry.name;
  bool is_new = false;
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    if (!is_connected(watch, i)) continue;
    SideJob side{watch.entry.sources[i].source};
    if (auto *file = std::get_if<WatchedFile>(&watch.feeds[i])) {
      side.is_watched = true;
      is_new = is_new || file->is_changed || !watch.sides[i].connected;
      watch.sides[i].row_changes.emplace();  // collected after the worker has read the file
      prepare_reading(*file);
    } else {
      const Snapshot &snapshot = snapshot_of(watch, i);
      is_new = collect_row_changes(watch, i) || is_new;
      side.contents = snapshot.contents;
      side.errors = all_errors(snapshot);
    }
    job.sides[i] = std::move(side);
  }
  return is_new ? std::optional(std::move(job)) : std::nullopt;
}

void advance(PairWatch &watch);

void handle_failure(PairWatch &watch, const std::string &problem) {
  watch.outcome.reset();
  Event event = make_event(Event::Kind::error, watch);
  event.source = watch.entry.sources[0].source.label;
  InputError error;
  error.found = problem;
  event.errors = {error};
  watch.unknown = {.kind = UnknownCause::Kind::failed, .side = 0, .reason = problem, .error = {}};
  for (SideState &side : watch.sides) {
    side.connected = false;
    side.row_changes.reset();
  }
  watch.has_compared = false;  // the next verdict is reported as a new one
  watch.not_before = Clock::now() + retry_delay;
  watch.timer.set(watch.not_before);
  watch.context.listener(watch, {event});
}

void handle_answer(PairWatch &watch, CompareAnswer answer) {
  watch.phase = PairWatch::Phase::idle;
  if (!answer.problem.empty()) return handle_failure(watch, answer.problem);
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    auto *file = std::get_if<WatchedFile>(&watch.feeds[i]);
    if (file == nullptr || !watch.sides[i].row_changes) continue;
    update_contents(*file, answer.sides[i]);
    if (is_connected(watch, i)) collect_row_changes(watch, i);
  }
  std::vector<Event> events = report_disconnections(watch);
  append_events(events, report_changes(watch, std::move(answer)));
  for (SideState &side : watch.sides) side.row_changes.reset();
  watch.is_started = true;
  watch.context.listener(watch, std::move(events));
  advance(watch);
}

void queue_job(PairWatch &watch) {
  watch.phase = PairWatch::Phase::queued;
  const std::weak_ptr<bool> is_alive = watch.is_alive;
  watch.context.pool.add({[&watch, is_alive]() -> std::optional<CompareJob> {
                            if (is_alive.expired()) return std::nullopt;
                            std::optional<CompareJob> job = make_job(watch);
                            watch.phase =
                                job ? PairWatch::Phase::comparing : PairWatch::Phase::idle;
                            if (!job) watch.timer.set(TimePoint{});
                            return job;
                          },
                          [&watch, is_alive](CompareAnswer answer) {
                            if (!is_alive.expired()) handle_answer(watch, std::move(answer));
                          }});
}

// Takes the steps that are possible now.
void advance(PairWatch &watch) {
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    if (!watch.is_started && snapshot_of(watch, i).state == SourceState::connecting) return;
  }
  std::vector<Event> events = report_disconnections(watch);
  const TimePoint due = find_due(watch);
  if (watch.phase == PairWatch::Phase::idle && due <= Clock::now()) {
    watch.phase = PairWatch::Phase::settling;
    watch.settled = {};
  }
  if (watch.phase == PairWatch::Phase::settling && is_settled(watch)) {
    append_events(events, report_disconnections(watch));
    queue_job(watch);
  }
  if (watch.phase == PairWatch::Phase::idle) watch.timer.set(due);
  if (watch.phase == PairWatch::Phase::idle || watch.has_start_error()) watch.is_started = true;
  watch.context.listener(watch, std::move(events));
}

}  // namespace

PairWatch::PairWatch(WatchContext &shared, const PairEntry &pair)
    : context(shared), entry(pair), timer(shared.loop, [this] { advance(*this); }) {
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    const Source &source = entry.sources[i].source;
    const auto on_step = [this] { advance(*this); };
    if (source.kind == Source::Kind::file) {
      feeds[i].emplace<WatchedFile>(context.loop, source.place, context.intervals.unnotified,
                                    on_step);
    } else {
      feeds[i].emplace<DatabaseFeed>(context.admission, source, context.intervals, context.limits,
                                     on_step);
    }
  }
}

bool PairWatch::has_start_error() {
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    const Snapshot &snapshot = snapshot_of(*this, i);
    const bool is_file = std::holds_alternative<WatchedFile>(feeds[i]);
    if (snapshot.state == SourceState::disconnected && (snapshot.refused || is_file)) return true;
    if (!sides[i].errors.empty()) return true;
  }
  return false;
}

bool PairWatch::is_current() {
  return phase == Phase::idle && find_due(*this) == TimePoint::max();
}

PairStatus PairWatch::status() {
  PairStatus status{.name = entry.name,
                    .sources = {},
                    .outcome = outcome,
                    .unknown = outcome ? std::nullopt : unknown,
                    .comparison = comparison,
                    .compared = confirmed,
                    .changed = changed};
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    status.sources[i] = entry.sources[i].source.label;
    status.connected[i] = is_connected(*this, i) && sides[i].connected;
  }
  return status;
}

Snapshot &snapshot_of(PairWatch &watch, std::size_t side) {
  if (auto *file = std::get_if<WatchedFile>(&watch.feeds[side])) return file->snapshot;
  return std::get<DatabaseFeed>(watch.feeds[side]).database.snapshot;
}

bool is_connected(PairWatch &watch, std::size_t side) {
  return snapshot_of(watch, side).state == SourceState::connected;
}

void update_intervals(PairWatch &watch) {
  for (Feed &feed : watch.feeds) {
    auto *database = std::get_if<DatabaseFeed>(&feed);
    if (database != nullptr) set_intervals(*database, watch.context.intervals);
  }
}

}  // namespace lab
