// A switch's configuration database, read and watched.
//
// Two connections: one gets notifications of the rows that change, on the other rows are read.
// First comes the subscription, then the first reading, so that no change is missed between the
// two. What sends no notification of its rows (a flushed or swapped database) is found by reading
// all of them anew. Nothing is ever written.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sonic/connection.h"
#include "sonic/reading.h"
#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

// How often a database is looked at while nothing is notified.
struct ReadIntervals {
  Clock::duration unnotified =
      std::chrono::seconds(1);                          // all rows, of a server that never notifies
  Clock::duration notified = std::chrono::seconds(10);  // all rows, of one that does
  Clock::duration sign_of_life = std::chrono::seconds(1);
};

// What ends with the connections.
struct DatabaseSession {
  std::optional<Resolver> resolver;
  Connection rows;
  Connection changes;   // without a context: the server lets nobody subscribe
  bool silent = false;  // the server does not say whether it notifies

  // Keys of all tables, by DBSIZE, corrected by the rows that came and went since.
  std::optional<int64_t> keys;
  bool answers_size = true;

  std::optional<Reading> reading;
  int repeats = 0;
  TimePoint read_next;

  // Rows of which notifications have come, and that are not asked for yet. If they are more than
  // the limit, all rows are read.
  std::set<std::string> changed;
  bool is_fenced = false;  // an answer is awaited behind the notifications
  int rounds = 0;
};

struct Database : DatabaseSession {
  Source source;
  ReadIntervals intervals;
  ReadLimits limits;
  Snapshot snapshot;

  std::vector<std::string> addresses;  // that have not been tried yet
  // Until all rows have been read, or those that changed have been brought in.
  std::optional<TimePoint> deadline;

  bool away = true;  // there are no connections; they are tried again when it is due
  Clock::duration pause{};
  TimePoint try_next;
};

// The process ignores SIGPIPE from then on.
Database open_database(const Source &source, const ReadIntervals &intervals, TimePoint now,
                       const ReadLimits &limits);

// Do all that can be done without waiting. Call it when a socket is ready, and when it is due.
void step(Database &database, TimePoint now);
TimePoint due(const Database &database);

// Read the rows of which notifications have come. Call it after every step, until it returns true:
// the snapshot is then what the server had at one time. A lost source is always settled.
bool settle(Database &database, TimePoint now);

}  // namespace lab
