#include "tasks/watched_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <tuple>

#include "text/file.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// A change may leave a file as large and as old as it was; it is read anew after this all the same.
constexpr auto anew_after = 10s;
// Between two looks at a file that is being written.
constexpr auto next_glance = 50ms;

struct OpenFile {
  int descriptor;

  explicit OpenFile(const std::string &path)
      : descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;
  ~OpenFile() {
    if (descriptor >= 0) close(descriptor);
  }
};

bool is_same(const struct stat &a, const struct stat &b) {
  const auto all_of = [](const struct stat &of) {
    return std::tuple(of.st_dev, of.st_ino, of.st_size, of.st_mtim.tv_sec, of.st_mtim.tv_nsec,
                      of.st_ctim.tv_sec, of.st_ctim.tv_nsec);
  };
  return all_of(a) == all_of(b);
}

// What is wrong, "" when the file has been read.
std::string read_bytes(const std::string &path, std::string &bytes, struct stat &read_as) {
  const OpenFile file(path);
  if (file.descriptor < 0 || fstat(file.descriptor, &read_as) != 0) return std::strerror(errno);
  if (!S_ISREG(read_as.st_mode)) return "this is no regular file";
  return read_all(file.descriptor, bytes);
}

void take(WatchedFile &file, ReadText read, TimePoint now) {
  Snapshot &snapshot = file.snapshot;
  InputErrors &errors = snapshot.errors[""];
  bool differs = errors != read.errors;
  errors = std::move(read.errors);
  if (!errors.empty() && (!read.rows || read.rows->empty())) {
    // Its last contents are kept: what it has when it is readable again is compared with them.
  } else if (!read.rows) {
    differs = differs || snapshot.settings != read.settings;
    if (differs) snapshot.before.try_emplace("");
    snapshot.rows.clear();
    snapshot.settings = std::move(read.settings);
  } else {
    if (snapshot.settings) snapshot.before.try_emplace("");
    snapshot.settings.reset();
    for (const std::string &name : differing_rows(snapshot.rows, *read.rows)) {
      const Row *row = find_row(*read.rows, name);
      change_row(snapshot, name, row != nullptr ? std::optional<Row>(*row) : std::nullopt);
      differs = true;
    }
  }
  if (errors.empty()) snapshot.errors.clear();
  if (differs) notice_change(snapshot, now);
  snapshot.checked = now;
}

void read_now(WatchedFile &file, TimePoint now) {
  std::string bytes;
  const std::string problem = read_bytes(file.source.place, bytes, file.last_read);
  file.last_seen = file.last_read;
  file.changed = false;
  file.read_next = now + anew_after;
  if (!problem.empty()) return lose(file.snapshot, problem, false);
  take(file, file.reader(bytes), now);
  if (file.snapshot.state == SourceState::here) return;
  file.snapshot.state = SourceState::here;
  file.snapshot.reason.clear();
  file.snapshot.before.clear();
  file.snapshot.first_change.reset();
}

}  // namespace

void step(WatchedFile &file, TimePoint now) {
  if (now < file.look_next) return;
  Snapshot &snapshot = file.snapshot;
  struct stat seen {};
  if (snapshot.state == SourceState::opening) {
    read_now(file, now);
  } else if (stat(file.source.place.c_str(), &seen) != 0) {
    lose(snapshot, std::strerror(errno), false);
  } else if (snapshot.state == SourceState::lost) {
    // Somebody may still be writing it.
    if (is_same(seen, file.last_seen)) read_now(file, now);
  } else if (!is_same(seen, file.last_seen)) {
    file.changed = true;
    notice_change(snapshot, now);
  } else if (!file.changed && now >= file.read_next) {
    read_now(file, now);
  }
  const bool stays =
      snapshot.state == SourceState::here ? !file.changed : is_same(seen, file.last_seen);
  if (snapshot.state != SourceState::here || file.changed) file.last_seen = seen;
  file.look_next =
      now + (stays ? file.interval : std::min<Clock::duration>(file.interval, next_glance));
}

bool settle(WatchedFile &file, TimePoint now) {
  if (file.snapshot.state != SourceState::here) return true;
  if (file.changed) read_now(file, now);
  file.snapshot.first_change.reset();
  file.snapshot.last_change.reset();
  return true;
}

}  // namespace lab
