// The rows of databases, read once.
#pragma once

#include <string>
#include <vector>

#include "sonic/limits.h"
#include "sonic/rows.h"
#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

// What a database has that has been read; an error says that it is lost.
ReadRows take_reading(Snapshot snapshot);

// Of each source, in their order. Waits until all have been read, or their time is up. Throws
// Interrupted.
std::vector<ReadRows> read_databases(const std::vector<Source> &sources, const ReadLimits &limits);

}  // namespace lab
