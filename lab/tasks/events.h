// Events of a pair that is watched: what changed in its sources, and what that did to the verdict.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "report/event.h"
#include "sonic/snapshot.h"
#include "tasks/compare.h"

namespace lab {

// What has been reported of a source.
struct SideState {
  bool connected = false;
  bool disconnected = false;
  std::map<std::string, InputErrors> reading;  // the errors of the snapshot, by row
  InputErrors errors;                          // all
};

// What has been reported of a pair.
struct PairState {
  Sides sides;
  std::array<SideState, 2> states;
  bool started = false;
  CompareOptions options;
  std::optional<Outcome> outcome;                // nothing: not known
  std::shared_ptr<const PairReport> comparison;  // the last
};

using SnapshotPair = std::array<Snapshot *, 2>;

// A pair of which nothing has been reported.
PairState make_pair_state(const std::array<std::string, 2> &sources, const CompareOptions &options);

// What has become known since the last call. Call it with settled sources, whose memory of changes
// it clears. Throws SwitchFailed and Interrupted.
std::vector<Event> report_changes(PairState &state, const SnapshotPair &snapshots);

// The sources that have become disconnected.
std::vector<Event> report_disconnections(PairState &state, const SnapshotPair &snapshots);

}  // namespace lab
