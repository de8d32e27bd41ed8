// Watches a pair: follows its two sources, compares them after changes, and makes the events.
#pragma once

#include <sys/stat.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "report/status.h"
#include "sonic/feed.h"
#include "tasks/pool.h"

namespace lab {

// A file that is polled for changes.
struct WatchedFile {
  // `on_poll` is called after each poll, and must not destroy the record.
  WatchedFile(Loop &loop, std::string path, Clock::duration interval, Callback on_poll);

  void poll();

  std::string path;
  Clock::duration interval;
  Callback on_poll;
  Timer timer;
  Snapshot snapshot;
  bool is_changed = false;             // since it was read
  std::optional<TimePoint> reread_at;  // read it then, even if its status is unchanged
  struct stat status {};               // of the last poll
};

// Called before the file is read.
void prepare_reading(WatchedFile &file);

// Called after the file has been read.
void update_contents(WatchedFile &file, const SideAnswer &answer);

// --- the pair ---

struct PairWatch;

// Shared by all pairs of a watch.
struct WatchContext {
  Loop &loop;
  Admission &admission;
  Pool &pool;
  CompareOptions compare;
  ReadLimits limits;
  ReadIntervals intervals;  // of databases; files are polled every `unnotified`
  // Called after each step of a pair, also without events: a source may have been confirmed.
  std::function<void(PairWatch &, std::vector<Event>)> listener;
};

using Feed = std::variant<std::monostate, DatabaseFeed, WatchedFile>;

// The state of a source as last reported.
struct SideState {
  bool connected = false;
  bool disconnected = false;
  SharedContents contents = {};
  std::map<std::string, InputErrors> row_errors = {};  // as in Snapshot::errors
  InputErrors errors = {};                             // all, also those of the settings
  // The changed rows in the current comparison; nullopt if the source is not part of it.
  std::optional<std::vector<RowChange>> row_changes = {};
};

struct PairWatch {
  PairWatch(WatchContext &context, const PairEntry &entry);
  PairWatch(const PairWatch &) = delete;
  PairWatch &operator=(const PairWatch &) = delete;

  // Has a source an error, does it refuse access, or is it an unreadable file? Such a source ends a
  // watch of one pair at the start.
  bool has_start_error();
  bool is_current();  // no change waits for a comparison
  PairStatus status();

  enum class Phase {
    idle,
    settling,  // changed rows are being read
    queued,    // waits for a worker of the pool
    comparing,
  };

  WatchContext &context;
  PairEntry entry;
  std::array<Feed, 2> feeds;
  Timer timer;
  Phase phase = Phase::idle;
  bool is_started = false;  // the first comparison has ended, or is not possible
  std::array<bool, 2> settled = {};
  TimePoint not_before = {};  // delays the next comparison after a failure

  // The state as last reported.
  std::array<SideState, 2> sides = {};
  bool has_reported_start = false;
  bool has_compared = false;
  std::optional<Outcome> outcome = {};                // nullopt if unknown
  std::optional<UnknownCause> unknown = {};           // why the outcome is unknown
  std::shared_ptr<const PairReport> comparison = {};  // the last one
  std::optional<Outcome> reported = Outcome::agree;   // the outcome in the last event
  std::array<TimePoint, 2> checked = {};              // as in Snapshot, at the last confirmation
  std::chrono::system_clock::time_point confirmed = {};
  std::chrono::system_clock::time_point changed = {};
  // Expires with the record: tasks in the pool can outlive it.
  std::shared_ptr<bool> is_alive = std::make_shared<bool>(true);
};

Snapshot &snapshot_of(PairWatch &watch, std::size_t side);
bool is_connected(PairWatch &watch, std::size_t side);

// Applies the reading intervals of the context.
void update_intervals(PairWatch &watch);

// --- events ---

Event make_event(Event::Kind kind, const PairWatch &watch);

// Collects the rows of a source that have changed since the last call. Returns false if nothing
// has.
bool collect_row_changes(PairWatch &watch, std::size_t side);

// Makes the events of a comparison, for the sources with collected rows.
std::vector<Event> report_changes(PairWatch &watch, CompareAnswer answer);

// Makes the events of sources that have become disconnected, and excludes these from the current
// comparison.
std::vector<Event> report_disconnections(PairWatch &watch);

}  // namespace lab
