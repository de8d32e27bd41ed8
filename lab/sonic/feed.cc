#include "sonic/feed.h"

#include <algorithm>

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t max_admitted = 256;
// A server that does not answer occupies its place for this long.
constexpr auto max_admitted_time = 1s;
constexpr auto start_interval = 2ms;

}  // namespace

Admission::Admission(Loop &event_loop)
    : loop(event_loop), timer(event_loop, [this] {
        while (!waiting.empty() && admitted < max_admitted && next_start <= Clock::now()) {
          next_start = std::max(next_start, Clock::now() - 10 * start_interval) + start_interval;
          ++admitted;
          DatabaseFeed &feed = *waiting.front();
          waiting.pop_front();
          feed.stage = DatabaseFeed::Stage::admitted;
          feed.admitted_until = Clock::now() + max_admitted_time;
          feed.step();
        }
        if (!waiting.empty() && admitted < max_admitted) timer.set(next_start);
      }) {}

void Admission::enter(DatabaseFeed &feed) {
  feed.stage = DatabaseFeed::Stage::waiting;
  waiting.push_back(&feed);
  if (admitted < max_admitted) timer.set(next_start);
}

void Admission::leave(DatabaseFeed &feed) {
  if (feed.stage == DatabaseFeed::Stage::waiting) {
    waiting.erase(std::find(waiting.begin(), waiting.end(), &feed));
  } else if (feed.stage == DatabaseFeed::Stage::admitted) {
    --admitted;
    if (!waiting.empty()) timer.set(next_start);
  }
  feed.stage = DatabaseFeed::Stage::idle;
}

DatabaseFeed::DatabaseFeed(Admission &shared_admission, const Source &source,
                           const ReadIntervals &intervals, const ReadLimits &limits,
                           Callback step_callback)
    : admission(shared_admission),
      database(open_database(source, intervals, Clock::now(), limits)),
      on_step(std::move(step_callback)),
      timer(shared_admission.loop, [this] { step(); }) {
  admission.enter(*this);
}

DatabaseFeed::~DatabaseFeed() {
  admission.leave(*this);
}

void DatabaseFeed::step() {
  const TimePoint now = Clock::now();
  if (database.is_closed && stage != Stage::admitted) {
    if (stage == Stage::idle && due(database) <= now) admission.enter(*this);
    if (stage == Stage::idle) timer.set(due(database));
    return;
  }
  lab::step(database, now);
  wait();
  on_step();
}

bool DatabaseFeed::settle() {
  const bool is_settled = lab::settle(database, Clock::now());
  wait();
  return is_settled;
}

void DatabaseFeed::watch(AwaitedFile &awaited, int file, int events) {
  if (awaited.file != file) awaited = {file, {}};
  if (file < 0) return;
  if (!awaited.watch) awaited.watch.emplace(admission.loop, file, [this] { step(); });
  awaited.watch->wait_for(events);
}

void DatabaseFeed::wait() {
  if (stage == Stage::admitted && (database.snapshot.state == SourceState::connected ||
                                   database.is_closed || Clock::now() >= admitted_until)) {
    admission.leave(*this);
  }
  // The resolver first: a connection may reuse its descriptor in the same step. Connections that
  // close in one step are opened again in a later one.
  watch(resolver, database.resolver ? database.resolver->ready : -1, UV_READABLE);
  for (const auto &[awaited, connection] :
       {std::pair{&rows, &database.rows}, {&changes, &database.changes}}) {
    watch(*awaited, connection->context != nullptr ? connection->context->fd : -1,
          needs_writing(*connection) ? UV_READABLE | UV_WRITABLE : UV_READABLE);
  }
  timer.set(stage == Stage::admitted ? std::min(due(database), admitted_until) : due(database));
}

void set_intervals(DatabaseFeed &feed, const ReadIntervals &intervals) {
  Database &database = feed.database;
  database.intervals = intervals;
  database.next_reading = std::min(database.next_reading, Clock::now() + intervals.notified);
}

std::vector<ReadRows> read_databases(const std::vector<Source> &sources, const ReadLimits &limits) {
  if (sources.empty()) return {};
  Loop loop;
  Admission admission(loop);
  std::deque<DatabaseFeed> feeds;
  const auto is_opening = [](const DatabaseFeed &feed) {
    return feed.database.snapshot.state == SourceState::connecting;
  };
  for (const Source &source : sources) {
    feeds.emplace_back(admission, source, ReadIntervals{}, limits, [&] {
      if (std::none_of(feeds.begin(), feeds.end(), is_opening)) loop.stop();
    });
  }
  loop.run();
  std::vector<ReadRows> all;
  for (const DatabaseFeed &feed : feeds) {
    const Snapshot &snapshot = feed.database.snapshot;
    all.push_back({unpack(snapshot.contents), all_errors(snapshot)});
  }
  return all;
}

}  // namespace lab
