#include "report/verdict.h"

#include <algorithm>
#include <set>

namespace lab {
namespace {

using Reasons = std::set<Reason>;

Reasons find_reasons(const ScopeReport &scope) {
  Reasons reasons;
  if (has_inconsistent_ports(scope)) reasons.insert(Reason::inconsistent_ports);
  if (scope.codes[0] == 0 && scope.codes[1] == 0) return reasons;
  if (missing_side(scope)) {
    reasons.insert(Reason::missing_channel);
  } else if (std::any_of(scope.parameters.begin(), scope.parameters.end(), is_different)) {
    reasons.insert(Reason::different);
  } else {
    reasons.insert(Reason::not_checked);
  }
  return reasons;
}

Reasons find_reasons(const std::vector<ScopeReport> &checks) {
  Reasons reasons;
  for (const ScopeReport &scope : checks) reasons.merge(find_reasons(scope));
  return reasons;
}

Verdict make_verdict(const Reasons &reasons) {
  return {reasons.empty() ? Outcome::agree : Outcome::disagree, {reasons.begin(), reasons.end()}};
}

}  // namespace

bool is_agreed(const Verdict &verdict) {
  return verdict.outcome == Outcome::agree;
}

Verdict find_verdict(const ScopeReport &scope) {
  return make_verdict(find_reasons(scope));
}

Verdict find_verdict(const std::vector<ScopeReport> &checks) {
  return make_verdict(find_reasons(checks));
}

Verdict find_verdict(const PairReport &report) {
  Reasons reasons = find_reasons(report.checks);
  const auto is_off = [&](std::size_t side) {
    return report.sides[side].spanning_tree == SpanningTree::off;
  };
  if (is_off(0) != is_off(1)) reasons.insert(Reason::spanning_tree_off);
  return make_verdict(reasons);
}

}  // namespace lab
