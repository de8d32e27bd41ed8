// Databases in an event loop.
#pragma once

#include <deque>
#include <optional>

#include "io/loop.h"
#include "sonic/database.h"

namespace lab {

struct DatabaseFeed;

// Lets so many databases begin to connect, and to be read for the first time, at once.
struct Admission {
  explicit Admission(Loop &loop);

  void enter(DatabaseFeed &feed);  // it is started when there is room
  void leave(DatabaseFeed &feed);

  Loop &loop;
  Timer timer;
  std::deque<DatabaseFeed *> waiting;
  std::size_t inside = 0;
  TimePoint next;  // the start of the next one
};

// A database that takes its steps when a file is ready, or it is due.
struct DatabaseFeed {
  // `on_step` is called after each step, and must not end the record.
  DatabaseFeed(Admission &admission, const Source &source, const ReadIntervals &intervals,
               const ReadLimits &limits, Callback on_step);
  DatabaseFeed(const DatabaseFeed &) = delete;
  DatabaseFeed &operator=(const DatabaseFeed &) = delete;
  ~DatabaseFeed();

  bool settle();  // see database.h

  void step();
  void wait();  // for what is needed next

  enum class Place { outside, waiting, inside };

  // A file that the database waits for.
  struct AwaitedFile {
    int file = -1;    // less than 0: none
    uint64_t id = 0;  // a closed file's descriptor may be another file's now
    std::optional<FileWatch> watch;
  };

  Admission &admission;
  Database database;
  Callback on_step;
  Timer timer;
  std::array<AwaitedFile, 3> files;
  Place place = Place::outside;  // of the admission
  TimePoint leaves = {};         // at the latest, when it is inside
};

// From then on; what was planned for later comes earlier.
void set_intervals(DatabaseFeed &feed, const ReadIntervals &intervals);

// The databases of these sources, read once, in their order. Waits until all have been read, or
// their time is up; then an error says so. Throws Interrupted.
std::vector<ReadRows> read_databases(const std::vector<Source> &sources, const ReadLimits &limits);

}  // namespace lab
