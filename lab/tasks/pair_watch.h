// A pair that is watched: its two sources, and the comparisons that their changes ask for.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "report/status.h"
#include "sonic/feed.h"
#include "tasks/events.h"
#include "tasks/pool.h"
#include "tasks/watched_file.h"

namespace lab {

struct WatchEntry {
  std::string name;  // of one of many pairs
  std::array<Source, 2> sources;
  std::string name_space;  // of dumps of several ASICs

  bool operator==(const WatchEntry &) const = default;
};

struct PairWatch;

// What all pairs of a watch share.
struct WatchContext {
  Loop &loop;
  Admission &admission;
  Pool &pool;
  CompareOptions compare;
  ReadLimits limits;
  ReadIntervals intervals;  // of databases; `unnotified` of files, too
  // Called with what has happened, perhaps nothing, and when a source has been confirmed.
  std::function<void(PairWatch &, std::vector<Event>)> listener;
};

using Feed = std::variant<std::monostate, DatabaseFeed, WatchedFile>;

struct PairWatch {
  PairWatch(WatchContext &context, const WatchEntry &entry);
  PairWatch(const PairWatch &) = delete;
  PairWatch &operator=(const PairWatch &) = delete;
  ~PairWatch();

  bool is_current() const;  // nothing has changed that is not compared yet
  // At the start: has a source an error, does it refuse access, or is it no file?
  bool starts_wrong() const;
  PairStatus status() const;
  TimePoint find_checked(std::size_t side) const;  // when all of a source was last confirmed

  enum class Phase {
    idle,
    settling,  // rows that changed are read
    queued,    // for a process of the pool
    compared,
  };

  WatchContext &context;
  WatchEntry entry;
  PairState state;
  std::array<Feed, 2> feeds;
  Timer timer;
  Phase phase = Phase::idle;
  bool is_open = false;  // each source has been reached once, or has not
  std::array<bool, 2> settled = {};
  TimePoint not_before = {};  // the next comparison, after one that failed
  bool has_started = false;
  PairNews news;                                     // of the job under way
  std::optional<Outcome> reported = Outcome::agree;  // by the last event
  std::array<TimePoint, 2> checked = {};
  std::chrono::system_clock::time_point confirmed = {};
  std::chrono::system_clock::time_point changed = {};
  // Ends with the record: the pool may have a job of it then.
  std::shared_ptr<bool> is_alive = std::make_shared<bool>(true);
};

}  // namespace lab
