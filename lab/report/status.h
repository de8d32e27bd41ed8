// What is known of watched pairs now.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "report/verdict.h"
#include "text/error.h"

namespace lab {

// Why a verdict is not known.
struct UnknownCause {
  enum class Kind : uint8_t { disconnected, error, failed };
  Kind kind = Kind::failed;  // the comparison failed
  std::size_t side = 0;      // disconnected, error
  std::string reason;        // disconnected, failed
  InputError error;          // the first
};

struct PairStatus {
  std::string name;  // of one of many pairs
  std::array<std::string, 2> sources;
  std::optional<Outcome> outcome;                  // nothing: not known
  std::optional<UnknownCause> unknown;             // why it is not known, as far as it is known
  std::shared_ptr<const PairReport> comparison;    // the last
  std::array<bool, 2> connected = {};              // each source
  std::chrono::system_clock::time_point compared;  // when `outcome` was last confirmed; 0: never
  std::chrono::system_clock::time_point changed;   // since when `outcome` is what it is
};

// What the pair is called where many are: one that is watched alone has no name but its sources.
inline std::string pair_name(const PairStatus &status) {
  return status.name.empty() ? status.sources[0] + " " + status.sources[1] : status.name;
}

// All pairs that are watched, in the order of their list.
using FleetStatus = std::vector<PairStatus>;

// The worst verdict of all pairs; nothing: none is worse than one that is not known.
std::optional<Outcome> find_fleet_outcome(const FleetStatus &fleet);

}  // namespace lab
