// What happened to a pair that is watched.
#pragma once

#include <chrono>
#include <memory>

#include "report/status.h"
#include "sonic/rows.h"
#include "text/error.h"

namespace lab {

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
  std::vector<NoteReport> appeared;        // note: warnings that were not there before
  std::vector<NoteReport> gone_notes;      // note: warnings that are there no more
  FleetStatus fleet;                       // summary
};

}  // namespace lab
