// Events of a pair that is watched: what changed in its sources, and what that did to the verdict.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "report/event.h"
#include "sonic/snapshot.h"
#include "tasks/job.h"

namespace lab {

// What has been reported of a source.
struct SideState {
  std::string source;
  bool connected = false;
  bool disconnected = false;
  bool is_lost = false;                        // when it was looked at last
  std::map<std::string, InputErrors> reading;  // the errors of the snapshot, by row
  InputErrors errors;                          // all
  unsigned losses = 0;                         // so far
};

// What has been reported of a pair.
struct PairState {
  std::array<SideState, 2> sides;
  bool started = false;
  std::optional<Outcome> outcome;                // nothing: not known
  std::optional<UnknownCause> unknown;           // why it is not known
  std::shared_ptr<const PairReport> comparison;  // the last
};

// What is new on a side. The snapshot's memory of changes is in it.
struct SideNews {
  bool has_connected = false;
  bool has_new_reading = false;  // errors
  std::vector<RowChange> rows;
  bool has_new_errors = false;
  unsigned losses = 0;  // before it was taken

  bool is_empty() const {
    return !has_connected && !has_new_reading && !has_new_errors && rows.empty();
  }
};

using PairNews = std::array<std::optional<SideNews>, 2>;
using SnapshotPair = std::array<Snapshot *, 2>;

SideNews take_news(PairState &state, std::size_t side, Snapshot &snapshot);

// What a comparison of the sides with news has found.
std::vector<Event> report_changes(PairState &state, const SnapshotPair &snapshots, PairNews news,
                                  CompareAnswer answer);

// The sources that have become disconnected.
std::vector<Event> report_disconnections(PairState &state, const SnapshotPair &snapshots);

}  // namespace lab
