// Runs databases in an event loop.
#pragma once

#include <deque>
#include <optional>

#include "io/loop.h"
#include "sonic/database.h"

namespace lab {

struct DatabaseFeed;

// Limits how many databases connect and are read for the first time at once.
struct Admission {
  explicit Admission(Loop &loop);

  void enter(DatabaseFeed &feed);  // starts it now or later
  void leave(DatabaseFeed &feed);

  Loop &loop;
  Timer timer;
  std::deque<DatabaseFeed *> waiting;
  std::size_t admitted = 0;
  TimePoint next_start;  // earliest start of the next one
};

// A database that is stepped when one of its files is ready and when it is due.
struct DatabaseFeed {
  // Calls `on_step` after each step. It must not destroy this record.
  DatabaseFeed(Admission &admission, const Source &source, const ReadIntervals &intervals,
               const ReadLimits &limits, Callback on_step);
  DatabaseFeed(const DatabaseFeed &) = delete;
  DatabaseFeed &operator=(const DatabaseFeed &) = delete;
  ~DatabaseFeed();

  bool settle();  // see database.h

  void step();
  void wait();  // sets the timer and the watched files

  enum class Stage { idle, waiting, admitted };

  struct AwaitedFile {
    int file = -1;  // -1: none
    std::optional<FileWatch> watch;
  };

  void watch(AwaitedFile &awaited, int file, int events);

  Admission &admission;
  Database database;
  Callback on_step;
  Timer timer;
  AwaitedFile resolver;
  AwaitedFile rows;
  AwaitedFile changes;
  Stage stage = Stage::idle;      // in the admission
  TimePoint admitted_until = {};  // deadline while admitted
};

// Changes the intervals, and reads all rows earlier if the new interval requires it.
void set_intervals(DatabaseFeed &feed, const ReadIntervals &intervals);

// Reads the databases once and returns them in the order of the sources. A timeout is an error of
// its database. Throws Interrupted.
std::vector<ReadRows> read_databases(const std::vector<Source> &sources, const ReadLimits &limits);

}  // namespace lab
