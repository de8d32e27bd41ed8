// The state of watched pairs, and the events of a watch.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "report/verdict.h"
#include "sonic/rows.h"

namespace lab {

// Why a verdict is unknown.
struct UnknownCause {
  enum class Kind : uint8_t { disconnected, error, failed };
  Kind kind = Kind::failed;  // failed: the comparison
  std::size_t side = 0;      // disconnected, error
  std::string reason;        // disconnected, failed
  InputError error;          // error: the first one
};

struct PairStatus {
  std::string name;  // empty: the only pair
  std::array<std::string, 2> sources;
  std::optional<Outcome> outcome;                  // nullopt: unknown
  std::optional<UnknownCause> unknown;             // the cause of an unknown outcome, if available
  std::shared_ptr<const PairReport> comparison;    // the last one
  std::array<bool, 2> connected = {};              // each source
  std::chrono::system_clock::time_point compared;  // when `outcome` was last confirmed; 0: never
  std::chrono::system_clock::time_point changed;   // when `outcome` last changed
};

// Returns the name of a pair, or its sources if it has no name.
inline std::string pair_name(const PairStatus &status) {
  return status.name.empty() ? status.sources[0] + " " + status.sources[1] : status.name;
}

// All watched pairs, in the order of their list.
using FleetStatus = std::vector<PairStatus>;

// Counts the pairs with an outcome.
std::size_t count_pairs(const FleetStatus &fleet, std::optional<Outcome> outcome);

// Returns the first of `outcomes_by_urgency` that a pair has; agree without pairs.
std::optional<Outcome> find_fleet_outcome(const FleetStatus &fleet);

// --- events ---

// A row before and after a change; nullopt: no such row. If both are nullopt, the contents are
// unknown.
struct RowChange {
  std::size_t side = 0;
  std::string row;  // "TABLE|key", or the source
  std::optional<Row> before;
  std::optional<Row> after;
};

// The effect of a change on the verdicts.
struct ChangeEffect {
  std::vector<ScopeReport> checks;     // changed and new scopes
  std::map<std::string, bool> agreed;  // whether the changed scopes agreed before
  std::vector<std::string> gone;       // removed scopes
};

struct Event {
  enum class Kind : uint8_t { compared, changed, disconnected, connected, error, note, summary };

  Kind kind = Kind::compared;
  std::chrono::system_clock::time_point time;
  std::string pair;                              // its name, if it is one of many
  std::optional<Outcome> outcome;                // nullopt: unknown
  bool changes_outcome = false;                  // differs from the previous event
  std::shared_ptr<const PairReport> comparison;  // compared, connected
  std::array<bool, 2> notifications = {};  // compared, connected: whether each source sends them
  std::size_t side = 0;                    // disconnected, connected, error
  std::string source;                      // disconnected, error
  std::string reason;                      // disconnected
  std::vector<RowChange> rows;             // changed, error
  ChangeEffect effect;                     // changed
  std::optional<Outcome> outcome_before;   // changed
  InputErrors errors;                      // error
  std::vector<Note> appeared;              // note: new warnings
  std::vector<Note> gone_notes;            // note: removed warnings
  FleetStatus fleet;                       // summary
};

}  // namespace lab
