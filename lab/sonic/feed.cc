#include "sonic/feed.h"

#include <algorithm>

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t most_inside = 256;
// A server that does not answer occupies its place for this long.
constexpr auto longest_inside = 1s;
constexpr auto between_starts = 2ms;

}  // namespace

Admission::Admission(Loop &of)
    : loop(of), timer(of, [this] {
        while (!waiting.empty() && inside < most_inside && next <= Clock::now()) {
          next = std::max(next, Clock::now() - 10 * between_starts) + between_starts;
          ++inside;
          DatabaseFeed &feed = *waiting.front();
          waiting.pop_front();
          feed.place = DatabaseFeed::Place::inside;
          feed.leaves = Clock::now() + longest_inside;
          feed.step();
        }
        if (!waiting.empty() && inside < most_inside) timer.set(next);
      }) {}

void Admission::enter(DatabaseFeed &feed) {
  feed.place = DatabaseFeed::Place::waiting;
  waiting.push_back(&feed);
  if (inside < most_inside) timer.set(next);
}

void Admission::leave(DatabaseFeed &feed) {
  if (feed.place == DatabaseFeed::Place::waiting) {
    waiting.erase(std::find(waiting.begin(), waiting.end(), &feed));
  } else if (feed.place == DatabaseFeed::Place::inside) {
    --inside;
    if (!waiting.empty()) timer.set(next);
  }
  feed.place = DatabaseFeed::Place::outside;
}

DatabaseFeed::DatabaseFeed(Admission &of, const Source &source, const ReadIntervals &intervals,
                           const ReadLimits &limits, Callback callback)
    : admission(of),
      database(open_database(source, intervals, Clock::now(), limits)),
      on_step(std::move(callback)),
      timer(of.loop, [this] { step(); }) {
  admission.enter(*this);
}

DatabaseFeed::~DatabaseFeed() {
  admission.leave(*this);
}

void DatabaseFeed::step() {
  const TimePoint now = Clock::now();
  if (database.away && place != Place::inside) {
    if (place == Place::outside && due(database) <= now) admission.enter(*this);
    if (place == Place::outside) timer.set(due(database));
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

void DatabaseFeed::wait() {
  if (place == Place::inside && (database.snapshot.state == SourceState::connected ||
                                 database.away || Clock::now() >= leaves)) {
    admission.leave(*this);
  }
  struct Needed {
    int file = -1;
    uint64_t id = 0;
    int events = UV_READABLE;
  };
  std::array<Needed, 3> needed;
  if (database.resolver) needed[0].file = database.resolver->ready;
  for (const auto &[connection, of] :
       {std::pair{&database.rows, &needed[1]}, {&database.changes, &needed[2]}}) {
    if (connection->context == nullptr) continue;
    *of = {connection->context->fd, connection->id,
           needs_writing(*connection) ? UV_READABLE | UV_WRITABLE : UV_READABLE};
  }
  // Drop the watches of closed files before their descriptors are watched for other files.
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i].file == needed[i].file && files[i].id == needed[i].id) continue;
    files[i] = {needed[i].file, needed[i].id, {}};
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i].file < 0) continue;
    if (!files[i].watch) files[i].watch.emplace(admission.loop, files[i].file, [this] { step(); });
    files[i].watch->wait_for(needed[i].events);
  }
  timer.set(place == Place::inside ? std::min(due(database), leaves) : due(database));
}

void set_intervals(DatabaseFeed &feed, const ReadIntervals &intervals) {
  Database &database = feed.database;
  database.intervals = intervals;
  database.read_next = std::min(database.read_next, Clock::now() + intervals.notified);
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
