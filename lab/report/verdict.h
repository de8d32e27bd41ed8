// The verdict on a scope and on a pair, and why: the one place that decides it.
#pragma once

#include <vector>

#include "report/pair.h"
#include "report/scope.h"

namespace lab {

enum class Outcome : uint8_t { agree, disagree };

enum class Reason : uint8_t {
  spanning_tree_off,   // on one switch only
  missing_channel,     // on one switch only
  different,           // a parameter
  inconsistent_ports,  // ports of one channel on one switch
  not_checked,         // the library refused the check
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

}  // namespace lab
