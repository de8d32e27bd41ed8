#include "report/verdict.h"

#include "report/status.h"

#include <algorithm>
#include <set>

namespace lab {
namespace {

using Reasons = std::set<Reason>;

bool is_accepted(const ParameterReport &parameter) {
  return !is_different(parameter) || parameter.accepted;
}

Reasons find_reasons(const ScopeReport &scope) {
  Reasons reasons;
  if (has_inconsistent_ports(scope)) reasons.insert(Reason::inconsistent_ports);
  if (scope.codes[0] == 0 && scope.codes[1] == 0) return reasons;
  const auto &parameters = scope.parameters;
  if (missing_side(scope)) {
    if (!scope.accepted) reasons.insert(Reason::missing_channel);
  } else if (std::none_of(parameters.begin(), parameters.end(), is_different)) {
    reasons.insert(Reason::not_checked);
  } else if (!std::all_of(parameters.begin(), parameters.end(), is_accepted)) {
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
  if (report.is_strict && std::any_of(report.notes.begin(), report.notes.end(), is_warning)) {
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
  return rule_of(note.note.kind).severity == Severity::warning && !note.accepted;
}

Status find_status(const PairReport &report) {
  switch (find_verdict(report).outcome) {
    case Outcome::agree:
      return agreed;
    case Outcome::disagree:
      return disagreed;
    case Outcome::incomplete:
      return std::all_of(report.incomplete.begin(), report.incomplete.end(),
                         [](const IncompleteReport &of) { return of.accepted.has_value(); })
                 ? agreed
                 : incomplete;
  }
  return wrong;
}

Status worst_status(Status a, Status b) {
  constexpr Status order[] = {wrong, disagreed, incomplete, agreed};
  return *std::find_if(std::begin(order), std::end(order),
                       [=](Status status) { return status == a || status == b; });
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
