// The verdict on a scope and on a pair, and why: the one place that decides it; and how many scopes
// of a check disagree, and by what.
#pragma once

#include <map>

#include "report/pair.h"

namespace lab {

enum class Outcome : uint8_t { agree, disagree, incomplete };

enum class Reason : uint8_t {
  spanning_tree_off,   // on one switch only
  missing_channel,     // on one switch only
  different,           // a parameter
  inconsistent_ports,  // ports of one channel on one switch
  not_checked,         // the library refused the check
  warnings,            // remain, and the comparison is strict
  no_channels,         // see Incomplete
  no_twin_vlans,
};

struct Verdict {
  Outcome outcome = Outcome::agree;
  std::vector<Reason> reasons;  // each once, in the order of their values

  bool operator==(const Verdict &) const = default;
};

bool is_agreed(const Verdict &verdict);
bool has_reason(const Verdict &verdict, Reason reason);

Verdict find_verdict(const ScopeReport &scope);
Verdict find_verdict(const std::vector<ScopeReport> &checks);
Verdict find_verdict(const PairReport &report);

// A warning that is not accepted.
bool is_warning(const NoteReport &note);

// The exit status for a comparison: 0 agree, 1 disagree, 3 incomplete, unless that is accepted.
enum Status { agreed = 0, disagreed = 1, wrong = 2, incomplete = 3 };
Status find_status(const PairReport &report);

// Of several, wrong input counts most, then a difference, then what could not be compared.
Status worst_status(Status a, Status b);

struct ScopeCount {
  std::size_t scopes = 0;                   // in which a parameter is sent by a switch
  std::vector<const ScopeReport *> differ;  // of these
};

struct Summary {
  std::size_t disagreeing = 0;                // scopes
  std::map<uint16_t, ScopeCount> parameters;  // by type; a missing channel has no differences
  std::array<std::size_t, 2> missing = {};    // channels that left and right lack
  std::size_t inconsistent = 0;
  std::size_t accepted = 0;  // scopes with accepted differences
};

Summary summarize(const std::vector<ScopeReport> &checks);

}  // namespace lab
