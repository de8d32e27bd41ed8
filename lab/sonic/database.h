// Reads and watches the configuration database of a switch.
//
// There are two connections: one receives notifications of changed rows, the other reads rows. The
// first reading starts after the subscription, so that no change is missed between them. Changes
// without notifications of rows (FLUSHDB, SWAPDB) are found by reading all rows again. The database
// is never written.
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

struct ReadIntervals {
  // Between readings of all rows, with and without notifications of changes.
  Clock::duration unnotified = std::chrono::seconds(1);
  Clock::duration notified = std::chrono::seconds(10);
  // Between PINGs (or DBSIZEs) on a quiet connection.
  Clock::duration probe_interval = std::chrono::seconds(1);
};

// State that is discarded when the connections close.
struct DatabaseSession {
  std::optional<Resolver> resolver;
  Connection rows;
  Connection changes;           // without a context: the server does not permit subscriptions
  bool refuses_config = false;  // CONFIG GET: it is not sent again, nor logged by the server

  // Keys in the database, by DBSIZE, adjusted for the rows added and removed since.
  std::optional<int64_t> keys;
  bool answers_size = true;

  std::optional<Reading> reading;
  int repeats = 0;
  TimePoint next_reading;

  // Changed rows that are not requested yet. Above the limit, all rows are read.
  std::set<std::string> changed;
  bool is_fenced = false;  // a PING is pending that follows the notifications
  int rounds = 0;
};

struct Database : DatabaseSession {
  Source source;
  ReadIntervals intervals;
  ReadLimits limits;
  Snapshot snapshot;

  std::vector<std::string> addresses;  // not tried yet
  std::optional<TimePoint> deadline;   // for connecting and reading, or for a partial reading

  bool is_closed = true;  // no connections until `next_attempt`
  Clock::duration pause{};
  TimePoint next_attempt;
};

// Makes the process ignore SIGPIPE.
Database open_database(const Source &source, const ReadIntervals &intervals, TimePoint now,
                       const ReadLimits &limits);

// Reads and writes without blocking. Call it when a socket is ready and at due().
void step(Database &database, TimePoint now);
TimePoint due(const Database &database);

// Requests the changed rows. Call it after every step until it returns true: the snapshot is then
// consistent, unless rows keep changing. Always returns true for a source that is not connected.
bool settle(Database &database, TimePoint now);

}  // namespace lab
