// What happens to a pair that is watched, told as events: the documents of `mcec-lab watch --json`, from
// which everything that a person sees is made. docs/watch.md describes them.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "output/json.h"
#include "sonic/snapshot.h"
#include "tasks/compare.h"

namespace lab {

// What has been told of one of the two sources.
struct SideTold {
  bool here = false;
  bool lost = false;
  std::map<std::string, InputErrors> reading;  // errors of it, from which those below were made
  InputErrors errors;
};

// What has been told of the pair.
struct Told {
  std::array<Side, 2> sides;
  std::array<SideTold, 2> told;
  bool started = false;
  std::optional<bool> agree;  // nothing: it is not known
  Json comparison;            // the last; null before the first
};

using SnapshotPair = std::array<Snapshot *, 2>;

// The sources of a pair of which nothing has been told.
Told nothing_told(const std::array<std::string, 2> &sources);

// What has become known once everything that changed has been brought in: call it with settled
// sources. Forgets what they snapshot before. Throws SwitchFailed and Interrupted.
std::vector<Json> tell_changes(Told &told, const SnapshotPair &snapshot);

// The sources that have been lost.
std::vector<Json> tell_losses(Told &told, const SnapshotPair &snapshot);

}  // namespace lab
