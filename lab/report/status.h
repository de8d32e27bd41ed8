// What is known of watched pairs now, and what happened to them.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "report/verdict.h"
#include "sonic/rows.h"

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

// How many pairs have an outcome.
std::size_t count_pairs(const FleetStatus &fleet, std::optional<Outcome> outcome);

// The first of `all_outcomes` that a pair has.
std::optional<Outcome> find_fleet_outcome(const FleetStatus &fleet);

// --- events ---

// A row before and after a change; nothing: there was or is none. Where both are nothing, only that
// it changed is known.
struct RowChange {
  std::size_t side = 0;
  std::string row;  // "TABLE|key", or the source
  std::optional<Row> before;
  std::optional<Row> after;
};

// What a change did to the verdicts.
struct ChangeEffect {
  std::vector<ScopeReport> checks;     // the scopes that are not as before
  std::map<std::string, bool> agreed;  // whether those that were there before agreed
  std::vector<std::string> gone;       // scopes
};

struct Event {
  enum class Kind : uint8_t { compared, changed, disconnected, connected, error, note, summary };

  Kind kind = Kind::compared;
  std::chrono::system_clock::time_point time;
  std::string pair;                              // its name, of one of many
  std::optional<Outcome> outcome;                // nothing: not known
  bool changes_outcome = false;                  // the event before had another one
  std::shared_ptr<const PairReport> comparison;  // compared, connected
  std::array<bool, 2> notifications = {};  // compared, connected: whether each source sends them
  std::size_t side = 0;                    // disconnected, connected, error
  std::string source;                      // disconnected, error
  std::string reason;                      // disconnected
  std::vector<RowChange> rows;             // changed, error
  ChangeEffect effect;                     // changed
  std::optional<Outcome> outcome_before;   // changed
  InputErrors errors;                      // error
  std::vector<Note> appeared;              // note: warnings that were not there before
  std::vector<Note> gone_notes;            // note: warnings that are there no more
  FleetStatus fleet;                       // summary
};

}  // namespace lab
