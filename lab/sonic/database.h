// A switch's configuration database, read and watched.
//
// Two connections: one gets notifications of the rows that change, on the other rows are read.
// First comes the subscription, then the first reading, so that no change is missed between the
// two. What sends no notification of its rows (a flushed or swapped database) is found by reading
// all of them anew. Nothing is ever written.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "sonic/limits.h"
#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

struct Database;

struct CloseDatabase {
  void operator()(Database *database) const;
};

using OpenDatabase = std::unique_ptr<Database, CloseDatabase>;

// How often a database is looked at while nothing is notified.
struct ReadIntervals {
  Clock::duration unnotified =
      std::chrono::seconds(1);                          // all rows, of a server that never notifies
  Clock::duration notified = std::chrono::seconds(10);  // all rows, of one that does
  Clock::duration sign_of_life = std::chrono::seconds(1);
};

// The process ignores SIGPIPE from then on.
OpenDatabase open_database(const Source &source, const ReadIntervals &intervals, TimePoint now,
                           const ReadLimits &limits);

// The same over sockets that are connected already, for rows and for changes; for tests. When it
// loses them it has no source to try again.
OpenDatabase adopt_database(const std::array<int, 2> &sockets, const ReadIntervals &intervals,
                            TimePoint now);

Snapshot &snapshot(Database &database);

// From then on; what was planned for later comes earlier.
void set_intervals(Database &database, const ReadIntervals &intervals);

// Do all that can be done without waiting. Call it when a socket is ready, and when it is due.
void step(Database &database, TimePoint now);
TimePoint due(const Database &database);

// Has it no connections, nor tries to have some? It tries again when it is due.
bool is_away(const Database &database);

// A file that a database waits for.
struct AwaitedFile {
  int file = -1;  // less than 0: none
  short events = 0;
  uint64_t id = 0;  // a closed file's descriptor may be another file's now

  bool operator==(const AwaitedFile &) const = default;
};

// They may be other ones after each step.
std::array<AwaitedFile, 3> files_of(const Database &database);

// Read the rows of which notifications have come. Call it after every step, until it returns true:
// the snapshot is then what the server had at one time. A lost source is always settled.
bool settle(Database &database, TimePoint now);

}  // namespace lab
