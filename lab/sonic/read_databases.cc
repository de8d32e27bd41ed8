#include "sonic/read_databases.h"

#include <algorithm>

#include "sonic/database.h"
#include "text/wait.h"

namespace lab {

std::vector<ReadDatabase> read_databases(const std::vector<Source> &sources,
                                         const ReadLimits &limits) {
  std::vector<OpenDatabase> databases;
  for (const Source &source : sources) {
    databases.push_back(open_database(source, limits.reading_time, Clock::now(), limits));
  }
  while (true) {
    std::vector<pollfd> sockets;
    TimePoint until = TimePoint::max();
    bool is_opening = false;
    for (const OpenDatabase &database : databases) {
      if (snapshot(*database).state != SourceState::opening) continue;
      step(*database, Clock::now());
      if (snapshot(*database).state != SourceState::opening) continue;
      is_opening = true;
      add_sockets(*database, sockets);
      until = std::min(until, due(*database));
    }
    if (!is_opening) break;
    wait(sockets, until);
  }
  std::vector<ReadDatabase> results;
  for (const OpenDatabase &database : databases) {
    Snapshot &is = snapshot(*database);
    ReadDatabase &read = results.emplace_back();
    read.rows = std::move(is.rows);
    read.lost = std::move(is.reason);
    for (const auto &[row, errors] : is.errors) {
      read.errors.insert(read.errors.end(), errors.begin(), errors.end());
    }
  }
  return results;
}

}  // namespace lab
