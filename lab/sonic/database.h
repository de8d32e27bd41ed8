// A switch's configuration database, read and watched.
//
// Two connections: one gets notifications of the rows that change, on the other rows are read.
// First comes the subscription, then the first reading, so that no change is missed between the
// two. What sends no notification of its rows (a flushed or swapped database) is found by reading
// all of them anew. Nothing is ever written.
#pragma once

#include <poll.h>

#include <array>
#include <memory>
#include <vector>

#include "sonic/limits.h"
#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

struct Database;

struct CloseDatabase {
  void operator()(Database *database) const;
};

using OpenDatabase = std::unique_ptr<Database, CloseDatabase>;

// `interval`: between two readings where the server sends no notifications. The process ignores
// SIGPIPE from then on.
OpenDatabase open_database(const Source &source, Clock::duration interval, TimePoint now,
                           const ReadLimits &limits);

// The same over sockets that are connected already, for rows and for changes; for tests. When it
// loses them it has no source to try again.
OpenDatabase adopt_database(const std::array<int, 2> &sockets, Clock::duration interval,
                            TimePoint now);

Snapshot &snapshot(Database &database);

// Do all that can be done without waiting. Call it when a socket is ready, and when it is due.
void step(Database &database, TimePoint now);
TimePoint due(const Database &database);
void add_sockets(const Database &database, std::vector<pollfd> &sockets);

// Read the rows of which notifications have come. Call it after every step, until it returns true:
// the snapshot is then what the server had at one time. A lost source is always settled.
bool settle(Database &database, TimePoint now);

}  // namespace lab
