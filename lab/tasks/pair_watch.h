// A pair that is watched: its two sources, the comparisons that their changes ask for, and what has
// been reported.
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

// A file that is looked at again and again.
struct WatchedFile {
  // `on_look` is called after each look, and must not end the record.
  WatchedFile(Loop &loop, std::string path, Clock::duration interval, Callback on_look);

  void look();

  std::string path;
  Clock::duration interval;
  Callback on_look;
  Timer timer;
  Snapshot snapshot;
  bool is_changed = false;              // since it was read
  std::optional<TimePoint> look_again;  // at its contents, though nothing shows a change
  struct stat seen {};
};

// The file is about to be read.
void begin_reading(WatchedFile &file);

// It has been read.
void take_contents(WatchedFile &file, const SideAnswer &contents);

// --- the pair ---

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

// What has been reported of a source.
struct SideState {
  bool connected = false;
  bool disconnected = false;
  SharedContents contents = {};
  std::map<std::string, InputErrors> reading = {};  // the errors of the snapshot, by row
  InputErrors errors = {};                          // all
  // Of the comparison under way: its rows that have changed. Nothing: the source is not compared.
  std::optional<std::vector<RowChange>> news = {};
};

struct PairWatch {
  PairWatch(WatchContext &context, const PairEntry &entry);
  PairWatch(const PairWatch &) = delete;
  PairWatch &operator=(const PairWatch &) = delete;

  // At the start: has a source an error, does it refuse access, or is it no file?
  bool starts_wrong();
  bool is_current();  // nothing has changed that is not compared yet
  PairStatus status();

  enum class Phase {
    idle,
    settling,  // rows that changed are read
    queued,    // for a process of the pool
    compared,
  };

  WatchContext &context;
  PairEntry entry;
  std::array<Feed, 2> feeds;
  Timer timer;
  Phase phase = Phase::idle;
  bool is_open = false;  // each source has been reached once, or has not
  std::array<bool, 2> settled = {};
  TimePoint not_before = {};  // the next comparison, after one that failed

  // What has been reported.
  std::array<SideState, 2> sides = {};
  bool has_started = false;
  bool has_compared = false;
  std::optional<Outcome> outcome = {};                // nothing: not known
  std::optional<UnknownCause> unknown = {};           // why it is not known
  std::shared_ptr<const PairReport> comparison = {};  // the last
  std::optional<Outcome> reported = Outcome::agree;   // by the last event
  std::array<TimePoint, 2> checked = {};
  std::chrono::system_clock::time_point confirmed = {};
  std::chrono::system_clock::time_point changed = {};
  // Ends with the record: the pool may have a job of it then.
  std::shared_ptr<bool> is_alive = std::make_shared<bool>(true);
};

Snapshot &snapshot_of(PairWatch &watch, std::size_t side);
bool is_connected(PairWatch &watch, std::size_t side);

// The reading intervals of the context have changed.
void update_intervals(PairWatch &watch);

// --- events ---

Event make_event(Event::Kind kind, const PairWatch &watch);

// Take what is new in a source for a comparison; false: nothing.
bool take_news(PairWatch &watch, std::size_t side);

// What a comparison of the sources with news has found.
std::vector<Event> report_changes(PairWatch &watch, CompareAnswer answer);

// The sources that have become disconnected. The comparison under way says nothing of them.
std::vector<Event> report_disconnections(PairWatch &watch);

}  // namespace lab
