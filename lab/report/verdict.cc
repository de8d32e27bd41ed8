#include "report/verdict.h"

#include "report/status.h"

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
    if (!scope.accepted) reasons.insert(Reason::missing_channel);
  } else if (std::ranges::none_of(scope.parameters, is_different)) {
    reasons.insert(Reason::not_checked);
  } else if (std::ranges::any_of(scope.parameters, [](const ParameterReport &parameter) {
               return is_different(parameter) && !parameter.accepted;
             })) {
    reasons.insert(Reason::different);
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

bool has_reason(const Verdict &verdict, Reason reason) {
  return std::ranges::find(verdict.reasons, reason) != verdict.reasons.end();
}

Verdict find_verdict(const ScopeReport &scope) {
  return make_verdict(find_reasons(scope));
}

Verdict find_verdict(const std::vector<ScopeReport> &checks) {
  return make_verdict(find_reasons(checks));
}

Verdict find_verdict(const PairReport &report) {
  Reasons reasons = find_reasons(report.checks);
  const auto &[left, right] = report.sides;
  if ((left.spanning_tree == SpanningTree::off) != (right.spanning_tree == SpanningTree::off)) {
    reasons.insert(Reason::spanning_tree_off);
  }
  if (report.is_strict && std::ranges::any_of(report.notes, is_warning)) {
    reasons.insert(Reason::warnings);
  }
  Verdict verdict = make_verdict(reasons);
  for (const IncompleteReport &incomplete : report.incomplete) {
    if (verdict.outcome == Outcome::agree) verdict.outcome = Outcome::incomplete;
    verdict.reasons.push_back(incomplete.reason == Incomplete::no_channels ? Reason::no_channels
                                                                           : Reason::no_twin_vlans);
  }
  return verdict;
}

bool is_warning(const NoteReport &note) {
  return is_warning_kind(note.note.kind) && !note.accepted;
}

Status find_status(const PairReport &report) {
  const Outcome outcome = find_verdict(report).outcome;
  if (outcome == Outcome::disagree) return disagreed;
  const bool is_accepted = std::ranges::all_of(
      report.incomplete, [](const IncompleteReport &of) { return of.accepted.has_value(); });
  return outcome == Outcome::agree || is_accepted ? agreed : incomplete;
}

Status worst_status(Status a, Status b) {
  constexpr Status order[] = {wrong, disagreed, incomplete, agreed};
  return *std::ranges::find_if(order, [=](Status status) { return status == a || status == b; });
}

Summary summarize(const std::vector<ScopeReport> &checks) {
  Summary summary;
  for (const ScopeReport &scope : checks) {
    const auto missing = missing_side(scope);
    if (!is_agreed(find_verdict(scope))) ++summary.disagreeing;
    if (has_inconsistent_ports(scope)) ++summary.inconsistent;
    if (has_accepted(scope)) ++summary.accepted;
    if (missing && !scope.accepted) ++summary.missing[*missing];
    for (const ParameterReport &parameter : scope.parameters) {
      ScopeCount &count = summary.parameters[parameter.type];
      ++count.scopes;
      if (!missing && is_different(parameter) && !parameter.accepted) {
        count.differ.push_back(&scope);
      }
    }
  }
  return summary;
}

std::optional<Outcome> find_fleet_outcome(const FleetStatus &fleet) {
  const auto has = [&](std::optional<Outcome> outcome) {
    return std::any_of(fleet.begin(), fleet.end(),
                       [&](const PairStatus &pair) { return pair.outcome == outcome; });
  };
  if (has(Outcome::disagree)) return Outcome::disagree;
  if (has(std::nullopt)) return std::nullopt;
  return has(Outcome::incomplete) ? Outcome::incomplete : Outcome::agree;
}

}  // namespace lab
