#include "report/verdict.h"

#include <algorithm>

#include "report/status.h"
#include "switch/values.h"

namespace lab {

bool is_different(const ParameterReport &parameter) {
  return std::ranges::any_of(parameter.states, [](State state) {
    return state == State::different || state == State::missing_at_peer;
  });
}

std::optional<std::size_t> missing_side(const ScopeReport &scope) {
  for (std::size_t side = 0; side < scope.scope.ends.size(); ++side) {
    if (!scope.scope.ends[side].present) return side;
  }
  return std::nullopt;
}

std::array<std::optional<std::string>, 2> find_value_texts(const ParameterReport &parameter) {
  std::array<std::optional<std::string>, 2> texts;
  for (std::size_t side = 0; side < texts.size(); ++side) {
    if (parameter.values[side]) texts[side] = display(parameter.type, *parameter.values[side]);
  }
  if (!texts[0] || texts[0] != texts[1] || parameter.values[0] == parameter.values[1]) return texts;
  const auto describe_size = [&](std::size_t side) {
    const Bytes &value = *parameter.values[side];
    return value.size() == sizeof(uint32_t) ? " (" + std::to_string(word_of(value)) + ")"
                                            : " (" + std::to_string(value.size()) + " bytes)";
  };
  const bool is_same_size = describe_size(0) == describe_size(1);
  *texts[0] += is_same_size ? " (other bytes than the peer's)" : describe_size(0);
  *texts[1] += is_same_size ? "" : describe_size(1);
  return texts;
}

bool has_accepted(const ScopeReport &scope) {
  return scope.accepted ||
         std::ranges::any_of(scope.parameters, [](const ParameterReport &parameter) {
           return parameter.accepted.has_value();
         });
}

bool has_inconsistent_ports(const ScopeReport &scope) {
  return !scope.inconsistent[0].empty() || !scope.inconsistent[1].empty();
}

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

Reasons find_reasons(const PairReport &report) {
  Reasons reasons;
  for (const ScopeReport &scope : report.checks) reasons.merge(find_reasons(scope));
  const auto &[left, right] = report.sides;
  if ((left.spanning_tree == SpanningTree::off) != (right.spanning_tree == SpanningTree::off)) {
    reasons.insert(Reason::spanning_tree_off);
  }
  if (report.is_strict && std::ranges::any_of(report.notes, is_warning)) {
    reasons.insert(Reason::warnings);
  }
  return reasons;
}

bool is_agreed(const ScopeReport &scope) {
  return find_reasons(scope).empty();
}

Outcome find_outcome(const PairReport &report) {
  return !find_reasons(report).empty() ? Outcome::disagree
         : !report.incomplete.empty()  ? Outcome::incomplete
                                       : Outcome::agree;
}

bool is_warning(const Note &note) {
  return note.kind != NoteKind::spanning_tree_off && !note.accepted;
}

Status find_status(const PairReport &report) {
  const Outcome outcome = find_outcome(report);
  if (outcome == Outcome::disagree) return disagreed;
  const bool is_accepted = std::ranges::all_of(
      report.incomplete,
      [](const IncompleteReport &reason) { return reason.accepted.has_value(); });
  return is_accepted ? agreed : incomplete;
}

Status worst_status(Status a, Status b) {
  constexpr Status order[] = {wrong, disagreed, incomplete, agreed};
  return *std::ranges::find_if(order, [=](Status status) { return status == a || status == b; });
}

Summary summarize(const std::vector<ScopeReport> &checks) {
  Summary summary;
  for (const ScopeReport &scope : checks) {
    const auto missing = missing_side(scope);
    if (!is_agreed(scope)) ++summary.disagreeing;
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

std::size_t count_pairs(const FleetStatus &fleet, std::optional<Outcome> outcome) {
  return std::size_t(std::ranges::count(fleet, outcome, &PairStatus::outcome));
}

std::optional<Outcome> find_fleet_outcome(const FleetStatus &fleet) {
  for (const auto &outcome : outcomes_by_urgency) {
    if (count_pairs(fleet, outcome) > 0) return outcome;
  }
  return Outcome::agree;
}

}  // namespace lab
