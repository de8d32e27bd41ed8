#include "output/words.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/values.h"

namespace lab {
namespace {

std::string describe_cause(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const uint32_t code = scope.codes[side];
  if (const Parameter *parameter = find_mismatched_parameter(code)) {
    return "DIFFERENT: " + parameter->key;
  }
  if (const auto missing = missing_side(scope)) {
    return std::string("MISSING on the ") + names[*missing];
  }
  for (const ParameterReport &parameter : scope.parameters) {
    if (code == STP_MCEC_ERR_FAILURE && parameter.states[side] == State::missing_at_peer) {
      return fmt::format("MISSING on the {}: {}", names[1 - side], parameter_key(parameter.type));
    }
  }
  return "NOT CHECKED";
}

// --- notes ---

std::string value_text(const std::optional<std::string> &value) {
  return value ? printable(*value) : "not set";
}

// "bpdu_guard (true on left, not set on right), path_cost (...)".
std::string fields_text(const Note &note, const SideNames &names) {
  return join(describe_each(note.fields, [&](const NoteField &field) {
    return fmt::format("{}{} ({} on {}, {} on {})", printable(field.name),
                       field.vlans.any() ? " of " + vlan_words(field.vlans) : "",
                       value_text(field.values[0]), names[0], value_text(field.values[1]),
                       names[1]);
  }));
}

// "Only left carries VLAN 2, and only right VLANs 3-4."
std::string vlans_text(const Note &note, const SideNames &names) {
  std::string text;
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (note.vlans[side].none()) continue;
    text += text.empty() ? fmt::format("Only {} carries ", names[side])
                         : fmt::format(", and only {} ", names[side]);
    text += vlan_words(note.vlans[side]);
  }
  return text + ".";
}

// By kind.
constexpr const char *note_sentences[] = {
    "Spanning tree is enabled on {side} only.",
    "{vlans}",
    "Port settings that no parameter covers differ: {fields}.",
    "Spanning tree is enabled on neither half.",
    "Timers of twin VLANs differ: {fields}.",
    "Timers differ: {fields}.",
    "The multi-chassis domains differ: {fields}.",
    "The switches do not name each other as peers: {fields}.",
    "Both switches have the address {address}.",
    "The {side} switch has multi-chassis channels and no peer link.",
    "Spanning tree is off on both switches: nothing runs.",
    "The accepted difference at line {line} {problem}."};
static_assert(std::size(note_sentences) == std::size_t(NoteKind::acceptance) + 1);

}  // namespace

const SideNames &side_names(const PairReport &report) {
  return report.is_intended ? intended_names : switch_names;
}

std::string list_first(const std::vector<std::string> &texts, std::size_t most,
                       const char *between) {
  const std::size_t count = std::min(texts.size(), most);
  const auto end = texts.begin() + std::ptrdiff_t(count);
  return join({texts.begin(), end}, between) +
         (texts.size() > most ? fmt::format(" and {} more", texts.size() - most) : "");
}

std::string format_count(std::size_t count, const char *what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string format_verb(std::size_t count, const char *verb) {
  return fmt::format("{} {}{}", count == 0 ? "none" : std::to_string(count), verb,
                     count <= 1 ? "s" : "");
}

std::vector<std::string> list_keys(const std::vector<uint16_t> &types) {
  return describe_each(types, parameter_key);
}

Difference find_difference(const ParameterReport &parameter) {
  const auto &[left, right] = parameter.values;
  return left && right ? difference(parameter.type, *left, *right) : Difference{};
}

std::string describe_result(uint32_t code, const char *success) {
  return fmt::format("{} (0x{:08X})", code == 0 ? success : result_name(code), code);
}

std::string describe_code(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const uint32_t code = scope.codes[side];
  return code == 0 ? "agrees"
                   : fmt::format("{}   ({}, 0x{:08X})", describe_cause(scope, side, names),
                                 result_name(code), code);
}

std::string describe_scope(const ScopeReport &report, const SideNames &names) {
  const PairScope &scope = report.scope;
  if (scope.kind == PairScope::Kind::of_switch) return "switch";
  std::string title = scope.name;
  const std::string &left = scope.ends[0].port_name;
  const std::string &right = scope.ends[1].port_name;
  if (scope.kind == PairScope::Kind::of_port) {
    title = "port " + scope.name;
  } else if (missing_side(report)) {
    // The name of the channel is enough.
  } else if (left != right) {
    title += fmt::format(": {} on the {}, {} on the {}", left, names[0], right, names[1]);
  } else if (left != scope.name) {
    title += ": " + left;
  }
  return title + (report.on_pod ? " (pod)" : "");
}

std::string describe_group(const ScopeGroup &group, const SideNames &names) {
  const std::size_t count = group.scopes.size();
  return count == 1 ? describe_scope(*group.scopes.front(), names)
                    : fmt::format("{} ({} channels)", group.name, count);
}

void add_count(const std::string &what, std::size_t count, std::vector<std::string> &causes) {
  if (count > 0) causes.push_back(fmt::format("{} ({})", what, count));
}

std::vector<std::string> count_differences(const Summary &summary) {
  std::vector<std::string> causes;
  for (const auto &[type, count] : summary.parameters) {
    add_count(parameter_key(type), count.differ.size(), causes);
  }
  return causes;
}

const char *state_name(State state) {
  constexpr const char *names[] = {"same",
                                   "different",
                                   "same on the twin VLANs",
                                   "missing at the peer",
                                   "only at the peer",
                                   "not compared in this mode",
                                   "not compared without twin VLANs",
                                   "ignored on pod ports",
                                   "not compared without a mode"};
  static_assert(std::size(names) == std::size_t(State::not_without_mode) + 1);
  return names[std::size_t(state)];
}

std::string describe_states(const ParameterReport &parameter, const SideNames &names) {
  const auto &[left, right] = parameter.states;
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (parameter.states[side] == State::missing_at_peer) {
      return std::string("missing on the ") + names[1 - side];
    }
  }
  if (left == State::only_at_peer && right == State::only_at_peer) return "";
  if (left == State::only_at_peer) return state_name(right);
  if (right == State::only_at_peer || left == right) return state_name(left);
  return fmt::format("{}: {}; {}: {}", names[0], state_name(left), names[1], state_name(right));
}

std::string describe_inconsistent_port(const InconsistentPort &port, const PairScope::End &end) {
  return fmt::format("port {} differs from {}: {}", port.name,
                     end.present ? end.port_name : "the first", join(list_keys(port.types)));
}

std::string describe_acceptance(const Acceptance &acceptance) {
  return acceptance.reason + (acceptance.until.empty() ? "" : " (until " + acceptance.until + ")");
}

std::vector<std::string> list_sides_off(const PairReport &report, const SideNames &names) {
  std::vector<std::string> off;
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (report.sides[side].spanning_tree == SpanningTree::off) off.emplace_back(names[side]);
  }
  return off;
}

const char *describe_incomplete(Incomplete reason) {
  return reason == Incomplete::no_channels
             ? "neither switch has a multi-chassis channel"
             : "no multi-chassis channel carries a VLAN on both switches, so the disabled VLANs "
               "were not compared";
}

const char *outcome_name(std::optional<Outcome> outcome) {
  constexpr const char *words[] = {"agree", "disagree", "incomplete"};
  return outcome ? words[std::size_t(*outcome)] : "unknown";
}

const char *spanning_tree_name(SpanningTree spanning_tree) {
  constexpr const char *names[] = {"off", "rapid-pvst", "mst", "unknown"};
  return names[std::size_t(spanning_tree)];
}

std::string describe_differences(const PairReport &report) {
  const Summary summary = summarize(report.checks);
  std::vector<std::string> causes = count_differences(summary);
  add_count("channels on one side only", summary.missing[0] + summary.missing[1], causes);
  add_count("inconsistent ports", summary.inconsistent, causes);
  const Reasons reasons = find_reasons(report);
  for (const auto &[reason, text] :
       {std::pair{Reason::spanning_tree_off, "spanning tree is off on one side"},
        {Reason::not_checked, "not checked"},
        {Reason::warnings, "warnings remain"}}) {
    if (reasons.contains(reason)) causes.emplace_back(text);
  }
  return join(causes);
}

std::string describe_note(const Note &note, const SideNames &names) {
  constexpr const char *problems[] = {"has expired on ", "matches nothing",
                                      "still has the reason TODO"};
  const bool is_expired = note.problem == AcceptanceProblem::expired;
  return fmt::format(
      fmt::runtime(note_sentences[std::size_t(note.kind)]),
      fmt::arg("side", note.side ? names[*note.side] : ""),
      fmt::arg("vlans", vlans_text(note, names)), fmt::arg("fields", fields_text(note, names)),
      fmt::arg("address", note.fields.empty() ? "" : value_text(note.fields[0].values[0])),
      fmt::arg("line", note.line),
      fmt::arg("problem", problems[std::size_t(note.problem)] + (is_expired ? note.until : "")));
}

std::string describe_notes(const NoteGroup &group, const SideNames &names) {
  return (group.channels.empty() ? "" : printable(join_ranges(group.channels)) + ": ") +
         describe_note(*group.note, names);
}

const char *severity_name(NoteKind kind) {
  return kind == NoteKind::spanning_tree_off ? "info" : "warning";
}

std::string describe_record(const ParameterRecord &record) {
  return parameter_key(record.type) + (record.port.empty() ? "" : "@" + record.port);
}

std::string describe_subject(const ExpectationReport &expectation) {
  return (expectation.side ? std::string(switch_names[*expectation.side]) + " " : "") +
         expectation.key + (expectation.subject.empty() ? "" : " of " + expectation.subject);
}

}  // namespace lab
