#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include "tasks/pair_watch.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// Two changes within so much time may leave a file as large and as old as it was.
constexpr auto time_of_a_tick = 1s;
// Between two looks at a file that is being written.
constexpr auto next_glance = 50ms;
// Until a file that could not be read is read again, though nothing shows a change.
constexpr auto pause_of_unreadable = 30s;

bool is_same(const struct stat &a, const struct stat &b) {
  const auto all_of = [](const struct stat &of) {
    return std::tuple(of.st_dev, of.st_ino, of.st_size, of.st_mtim.tv_sec, of.st_mtim.tv_nsec,
                      of.st_ctim.tv_sec, of.st_ctim.tv_nsec);
  };
  return all_of(a) == all_of(b);
}

void mark_changed(WatchedFile &file, TimePoint now) {
  file.is_changed = true;
  notice_change(file.snapshot, now);
}

}  // namespace

WatchedFile::WatchedFile(Loop &loop, std::string given, Clock::duration pause, Callback callback)
    : path(std::move(given)),
      interval(pause),
      on_look(std::move(callback)),
      timer(loop, [this] { look(); }) {
  timer.set(TimePoint{});
}

void WatchedFile::look() {
  const TimePoint now = Clock::now();
  const struct stat before = seen;
  const SourceState state = snapshot.state;
  seen = {};
  const int error = stat(path.c_str(), &seen) != 0 ? errno : 0;
  const bool is_stable = is_same(seen, before);
  if (!is_stable) look_again.reset();
  if (error != 0) {
    if (state != SourceState::disconnected)
      mark_disconnected(snapshot, std::strerror(error), false);
  } else if (state == SourceState::connecting ||
             (state == SourceState::disconnected && is_stable &&  // nobody is writing it
              (!look_again || now >= *look_again))) {
    snapshot = {};
    snapshot.state = SourceState::connected;
    mark_changed(*this, now);
  } else if (state == SourceState::connected &&
             (!is_stable || (look_again && now >= *look_again))) {
    look_again.reset();
    mark_changed(*this, now);
  }
  if (state == SourceState::connected && !is_changed) snapshot.checked = now;
  timer.set(now + (is_stable ? interval : std::min<Clock::duration>(interval, next_glance)));
  on_look();
}

void begin_reading(WatchedFile &file) {
  file.is_changed = false;
  file.snapshot.first_change.reset();
  file.snapshot.last_change.reset();
  const auto age = std::chrono::system_clock::now() -
                   std::chrono::system_clock::from_time_t(file.seen.st_ctim.tv_sec);
  if (age < 2 * time_of_a_tick) file.look_again = Clock::now() + time_of_a_tick;
}

void take_contents(WatchedFile &file, const SideAnswer &contents) {
  Snapshot &snapshot = file.snapshot;
  if (!contents.unreadable.empty()) {
    if (!file.is_changed) file.look_again = Clock::now() + pause_of_unreadable;
    return mark_disconnected(snapshot, contents.unreadable, false);
  }
  snapshot.checked = Clock::now();
  snapshot.errors.clear();
  if (!contents.errors.empty()) snapshot.errors[""] = contents.errors;
  // Of a file without rows the last contents are kept: what it has when it is readable again is
  // compared with them.
  if (contents.contents != nullptr) set_contents(snapshot, contents.contents);
}

}  // namespace lab
