#include "tasks/pair_watch.h"

#include <algorithm>
#include <utility>

#include "tasks/side.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// A burst is compared this long after its last change, and after its first.
constexpr auto quiet_after = 200ms;
constexpr auto at_latest = 400ms;
// A comparison that failed is made again.
constexpr auto pause_of_failure = 5s;

Snapshot &snapshot_of(const PairWatch &watch, std::size_t side) {
  Feed &feed = const_cast<Feed &>(watch.feeds[side]);
  if (auto *file = std::get_if<WatchedFile>(&feed)) return file->snapshot;
  return snapshot(*std::get<DatabaseFeed>(feed).database);
}

SnapshotPair snapshots_of(const PairWatch &watch) {
  return {&snapshot_of(watch, 0), &snapshot_of(watch, 1)};
}

bool is_here(const PairWatch &watch, std::size_t side) {
  return snapshot_of(watch, side).state == SourceState::here;
}

void add(std::vector<Event> &events, std::vector<Event> more) {
  std::move(more.begin(), more.end(), std::back_inserter(events));
}

// When what has changed on a side is to be compared.
TimePoint find_due(const PairWatch &watch, std::size_t side) {
  const Snapshot &snapshot = snapshot_of(watch, side);
  if (snapshot.state != SourceState::here) return TimePoint::max();
  if (!watch.state.sides[side].connected) return TimePoint{};
  if (!snapshot.first_change) return TimePoint::max();
  return std::min(*snapshot.last_change + quiet_after, *snapshot.first_change + at_latest);
}

// A side that is settled stays so until both are: what changes later is compared later.
bool is_settled(PairWatch &watch) {
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    auto *database = std::get_if<DatabaseFeed>(&watch.feeds[i]);
    if (!watch.settled[i]) watch.settled[i] = database == nullptr || database->settle();
  }
  return watch.settled[0] && watch.settled[1];
}

// --- jobs ---

// Nothing: there is nothing to compare, or nothing new.
std::optional<CompareJob> make_job(PairWatch &watch) {
  CompareJob job{.sides = {}, .options = watch.context.compare, .accept = {}};
  job.options.name = watch.entry.name;
  job.options.is_one_of_many = !watch.entry.name.empty();
  bool is_new = false;
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    if (!is_here(watch, i)) continue;
    SideJob side;
    side.source = watch.state.sides[i].source;
    if (auto *file = std::get_if<WatchedFile>(&watch.feeds[i])) {
      side.path = file->path;
      side.name_space = file->name_space;
      side.is_watched = true;
      is_new = is_new || file->is_changed || !watch.state.sides[i].connected;
      begin_reading(*file);
    } else {
      Snapshot &snapshot = snapshot_of(watch, i);
      watch.news[i] = take_news(watch.state, i, snapshot);
      is_new = is_new || !watch.news[i]->is_empty();
      side.rows = snapshot.rows;
      for (const auto &[row, errors] : snapshot.errors) {
        side.errors.insert(side.errors.end(), errors.begin(), errors.end());
      }
    }
    job.sides[i] = std::move(side);
  }
  return is_new ? std::optional(std::move(job)) : std::nullopt;
}

void advance(PairWatch &watch);

void take_answer(PairWatch &watch, CompareAnswer answer) {
  watch.phase = PairWatch::Phase::idle;
  if (!answer.problem.empty()) {
    Event event;
    event.kind = Event::Kind::error;
    event.time = std::chrono::system_clock::now();
    event.source = watch.state.sides[0].source;
    InputError error;
    error.found = answer.problem;
    event.errors = {error};
    watch.state.outcome.reset();
    watch.state.unknown = {
        .kind = UnknownCause::Kind::failed, .side = 0, .reason = answer.problem, .error = {}};
    for (SideState &side : watch.state.sides) side.connected = false;
    watch.state.started = false;  // it is reported when there is a verdict again
    watch.news = {};
    watch.not_before = Clock::now() + pause_of_failure;
    watch.timer.set(watch.not_before);
    return watch.context.listener(watch, {event});
  }
  for (std::size_t i = 0; i < watch.feeds.size(); ++i) {
    auto *file = std::get_if<WatchedFile>(&watch.feeds[i]);
    if (file == nullptr || !is_here(watch, i) || !std::exchange(file->is_read, false)) continue;
    take_contents(*file, std::move(answer.files[i]), answer.errors[i]);
    if (is_here(watch, i)) watch.news[i] = take_news(watch.state, i, file->snapshot);
  }
  std::vector<Event> events = report_disconnections(watch.state, snapshots_of(watch));
  add(events, report_changes(watch.state, snapshots_of(watch), std::exchange(watch.news, {}),
                             std::move(answer)));
  watch.is_open = true;
  watch.context.listener(watch, std::move(events));
  advance(watch);
}

void queue_job(PairWatch &watch) {
  watch.phase = PairWatch::Phase::queued;
  const std::weak_ptr<bool> is_alive = watch.is_alive;
  watch.context.pool.add({[&watch, is_alive]() -> std::optional<CompareJob> {
                            if (is_alive.expired()) return std::nullopt;
                            std::optional<CompareJob> job = make_job(watch);
                            watch.phase = job ? PairWatch::Phase::compared : PairWatch::Phase::idle;
                            if (!job) watch.timer.set(TimePoint{});
                            return job;
                          },
                          [&watch, is_alive](CompareAnswer answer) {
                            if (!is_alive.expired()) take_answer(watch, std::move(answer));
                          }});
}

// Do what has become possible.
void advance(PairWatch &watch) {
  const SnapshotPair snapshots = snapshots_of(watch);
  const auto is_opening = [](const Snapshot *snapshot) {
    return snapshot->state == SourceState::opening;
  };
  if (!watch.is_open && std::any_of(snapshots.begin(), snapshots.end(), is_opening)) return;
  std::vector<Event> events = report_disconnections(watch.state, snapshots);
  const TimePoint due =
      std::max(watch.not_before, std::min(find_due(watch, 0), find_due(watch, 1)));
  if (watch.phase == PairWatch::Phase::idle && due <= Clock::now()) {
    watch.phase = PairWatch::Phase::settling;
    watch.settled = {};
  }
  if (watch.phase == PairWatch::Phase::settling && is_settled(watch)) {
    add(events, report_disconnections(watch.state, snapshots));
    queue_job(watch);
  }
  if (watch.phase == PairWatch::Phase::idle) watch.timer.set(due);
  if (watch.phase == PairWatch::Phase::idle || watch.starts_wrong()) watch.is_open = true;
  watch.context.listener(watch, std::move(events));
}

}  // namespace

PairWatch::PairWatch(WatchContext &shared, const WatchEntry &given)
    : context(shared), entry(given), timer(shared.loop, [this] { advance(*this); }) {
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    const Source &source = entry.sources[i];
    state.sides[i].source = source.shown;
    // A step of the one may come before the other is made.
    const auto on_step = [this] { advance(*this); };
    if (source.kind == Source::Kind::file) {
      const auto [path, name_space] = split_namespace(source.place, entry.name_space);
      feeds[i].emplace<WatchedFile>(context.loop, path, name_space, context.intervals.unnotified,
                                    on_step);
    } else {
      feeds[i].emplace<DatabaseFeed>(context.admission, source, context.intervals, context.limits,
                                     on_step);
    }
  }
}

PairWatch::~PairWatch() = default;

bool PairWatch::starts_wrong() const {
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    const Snapshot &snapshot = snapshot_of(*this, i);
    const bool is_file = std::holds_alternative<WatchedFile>(feeds[i]);
    if (snapshot.state == SourceState::lost && (snapshot.refused || is_file)) return true;
    if (!state.sides[i].errors.empty()) return true;
  }
  return false;
}

TimePoint PairWatch::find_checked(std::size_t side) const {
  return snapshot_of(*this, side).checked;
}

bool PairWatch::is_current() const {
  return phase == Phase::idle &&
         std::min(find_due(*this, 0), find_due(*this, 1)) == TimePoint::max();
}

PairStatus PairWatch::status() const {
  PairStatus status{.name = entry.name,
                    .sources = {state.sides[0].source, state.sides[1].source},
                    .outcome = state.outcome,
                    .unknown = state.outcome ? std::nullopt : state.unknown,
                    .comparison = state.comparison,
                    .compared = confirmed,
                    .changed = changed};
  for (std::size_t i = 0; i < feeds.size(); ++i) {
    status.connected[i] = is_here(*this, i) && state.sides[i].connected;
  }
  return status;
}

}  // namespace lab
