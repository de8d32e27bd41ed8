#include <cerrno>
#include <cstring>
#include <tuple>
#include <utility>

#include "tasks/pair_watch.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// Two changes within this time may leave the same size and timestamps.
constexpr auto timestamp_resolution = 1s;
// The poll interval while a file is being written.
constexpr auto unstable_interval = 50ms;
// An unreadable file is read again after this time, even if its status is unchanged.
constexpr auto unreadable_delay = 30s;

bool is_unchanged(const struct stat &a, const struct stat &b) {
  const auto key = [](const struct stat &status) {
    return std::tuple(status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                      status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
  };
  return key(a) == key(b);
}

void mark_changed(WatchedFile &file, TimePoint now) {
  file.is_changed = true;
  record_change(file.snapshot, now);
}

}  // namespace

WatchedFile::WatchedFile(Loop &loop, std::string file_path, Clock::duration poll_interval,
                         Callback callback)
    : path(std::move(file_path)),
      interval(poll_interval),
      on_poll(std::move(callback)),
      timer(loop, [this] { poll(); }) {
  timer.set(TimePoint{});
}

void WatchedFile::poll() {
  const TimePoint now = Clock::now();
  const struct stat before = status;
  const SourceState state = snapshot.state;
  status = {};
  const int error = stat(path.c_str(), &status) != 0 ? errno : 0;
  const bool is_stable = is_unchanged(status, before);
  if (!is_stable) reread_at.reset();
  if (error != 0) {
    if (state != SourceState::disconnected)
      mark_disconnected(snapshot, std::strerror(error), false);
  } else if (state == SourceState::connecting ||
             (state == SourceState::disconnected && is_stable &&  // it is not being written
              (!reread_at || now >= *reread_at))) {
    snapshot = {};
    snapshot.state = SourceState::connected;
    mark_changed(*this, now);
  } else if (state == SourceState::connected && (!is_stable || (reread_at && now >= *reread_at))) {
    reread_at.reset();
    mark_changed(*this, now);
  }
  if (state == SourceState::connected && !is_changed) snapshot.checked = now;
  timer.set(now + (is_stable ? interval : std::min<Clock::duration>(interval, unstable_interval)));
  on_poll();
}

void prepare_reading(WatchedFile &file) {
  file.is_changed = false;
  file.snapshot.first_change.reset();
  file.snapshot.last_change.reset();
  const auto age = std::chrono::system_clock::now() -
                   std::chrono::system_clock::from_time_t(file.status.st_ctim.tv_sec);
  if (age < 2 * timestamp_resolution) file.reread_at = Clock::now() + timestamp_resolution;
}

void update_contents(WatchedFile &file, const SideAnswer &answer) {
  Snapshot &snapshot = file.snapshot;
  if (!answer.unreadable.empty()) {
    if (!file.is_changed) file.reread_at = Clock::now() + unreadable_delay;
    return mark_disconnected(snapshot, answer.unreadable, false);
  }
  snapshot.checked = Clock::now();
  snapshot.errors.clear();
  if (!answer.errors.empty()) snapshot.errors[""] = answer.errors;
  // An invalid file without rows keeps its last contents, to find the changes once it is valid
  // again.
  if (answer.contents != nullptr) set_contents(snapshot, answer.contents);
}

}  // namespace lab
