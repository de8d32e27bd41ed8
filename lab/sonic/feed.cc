#include "sonic/feed.h"

#include <poll.h>

#include <algorithm>

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t most_inside = 256;
// A hung server keeps its room for so long.
constexpr auto longest_inside = 1s;
constexpr auto between_starts = 2ms;

int uv_events(short events) {
  return ((events & POLLIN) != 0 ? UV_READABLE : 0) | ((events & POLLOUT) != 0 ? UV_WRITABLE : 0);
}

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
  if (is_away(*database) && place != Place::inside) {
    if (place == Place::outside && due(*database) <= now) admission.enter(*this);
    if (place == Place::outside) timer.set(due(*database));
    return;
  }
  lab::step(*database, now);
  wait();
  on_step();
}

bool DatabaseFeed::settle() {
  const bool is_settled = lab::settle(*database, Clock::now());
  wait();
  return is_settled;
}

void DatabaseFeed::wait() {
  const SourceState state = snapshot(*database).state;
  if (place == Place::inside &&
      (state == SourceState::here || is_away(*database) || Clock::now() >= leaves)) {
    admission.leave(*this);
  }
  const auto needed = files_of(*database);
  // Those of closed files end before their descriptors are watched for others.
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i].file != needed[i].file || files[i].id != needed[i].id) watches[i].reset();
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (needed[i].file >= 0) {
      if (!watches[i]) watches[i].emplace(admission.loop, needed[i].file, [this] { step(); });
      watches[i]->wait_for(uv_events(needed[i].events));
    }
    files[i] = needed[i];
  }
  timer.set(place == Place::inside ? std::min(due(*database), leaves) : due(*database));
}

}  // namespace lab
