// The verdict on a scope and on a pair, and why: the one place that decides it.
#pragma once

#include <vector>

#include "report/pair.h"
#include "report/scope.h"

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

}  // namespace lab
