#include "sonic/read_databases.h"

#include <algorithm>

#include "sonic/feed.h"

namespace lab {

ReadRows take_reading(Snapshot snapshot) {
  ReadRows read{std::move(snapshot.rows), {}};
  if (snapshot.state == SourceState::lost) {
    read.errors.push_back({0, 0, "", snapshot.reason, "a configuration database"});
  }
  for (const auto &[row, errors] : snapshot.errors) {
    read.errors.insert(read.errors.end(), errors.begin(), errors.end());
  }
  return read;
}

std::vector<ReadRows> read_databases(const std::vector<Source> &sources, const ReadLimits &limits) {
  if (sources.empty()) return {};
  Loop loop;
  Admission admission(loop);
  std::deque<DatabaseFeed> feeds;
  const auto is_opening = [](const DatabaseFeed &feed) {
    return snapshot(*feed.database).state == SourceState::opening;
  };
  for (const Source &source : sources) {
    feeds.emplace_back(admission, source, ReadIntervals{}, limits, [&] {
      if (std::none_of(feeds.begin(), feeds.end(), is_opening)) loop.stop();
    });
  }
  loop.run();
  std::vector<ReadRows> all;
  for (DatabaseFeed &feed : feeds) all.push_back(take_reading(std::move(snapshot(*feed.database))));
  return all;
}

}  // namespace lab
