#include "output/words.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/types.h"

namespace lab {
namespace {

std::string describe_cause(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const uint32_t code = scope.codes[side];
  if (code == 0) return "agrees";
  if (const Parameter *parameter = parameter_of_mismatch(code)) {
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
  std::vector<std::string> texts;
  for (const NoteField &field : note.fields) {
    texts.push_back(fmt::format("{}{} ({} on {}, {} on {})", printable(field.name),
                                field.vlans.any() ? " of " + vlan_words(field.vlans) : "",
                                value_text(field.values[0]), names[0], value_text(field.values[1]),
                                names[1]));
  }
  return join(texts);
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

std::string describe_problem(const NoteReport &report) {
  const std::string entry = fmt::format("The accepted difference at line {} ", report.line);
  return entry + (report.problem == AcceptanceProblem::expired
                      ? "has expired on " + report.until + "."
                  : report.problem == AcceptanceProblem::no_reason ? "still has the reason TODO."
                                                                   : "matches nothing.");
}

// --- runs ---

struct FindingToText {
  std::string operator()(std::monostate) const { return ""; }
  std::string operator()(const ResultCode &result) const { return code_name(result); }
  std::string operator()(const CheckCode &result) const { return code_name(result); }
  std::string operator()(const std::string &text) const { return text; }
  std::string operator()(const Vlans &vlans) const { return vlan_text(vlans); }
  std::string operator()(const std::vector<uint16_t> &types) const {
    return join(list_keys(types));
  }
  std::string operator()(const std::vector<ParameterRecord> &records) const {
    std::vector<std::string> texts;
    for (const ParameterRecord &record : records) texts.push_back(describe_record(record));
    return join(texts);
  }
  std::string operator()(const TextsByType &texts) const {
    std::vector<std::string> items;
    for (const auto &[type, text] : texts) {
      items.push_back(parameter_key(type) + ": " + (text && !text->empty() ? *text : "nothing"));
    }
    return join(items);
  }
};

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

std::string count_of(std::size_t count, const char *what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::vector<std::string> list_keys(const std::vector<uint16_t> &types) {
  std::vector<std::string> keys;
  for (const uint16_t type : types) keys.push_back(parameter_key(type));
  return keys;
}

std::string describe_result(uint32_t code, const char *success) {
  return fmt::format("{} (0x{:08X})", code == 0 ? success : result_name(code), code);
}

std::string describe_code(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const std::string cause = describe_cause(scope, side, names);
  const uint32_t code = scope.codes[side];
  return code == 0 ? cause : fmt::format("{}   ({}, 0x{:08X})", cause, result_name(code), code);
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
    // The one port says nothing more than the channel's name.
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

std::vector<std::string> count_differences(const Summary &summary) {
  std::vector<std::string> causes;
  for (const auto &[type, count] : summary.parameters) {
    if (count.differ.empty()) continue;
    causes.push_back(fmt::format("{} ({})", parameter_key(type), count.differ.size()));
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
  return fmt::format("port {} is not set like {}: {}", port.name,
                     end.present ? end.port_name : "the first", join(list_keys(port.types)));
}

std::string describe_acceptance(const Acceptance &acceptance) {
  return acceptance.reason + (acceptance.until.empty() ? "" : " (until " + acceptance.until + ")");
}

const char *describe_incomplete(Incomplete reason) {
  return reason == Incomplete::no_channels
             ? "neither switch has a multi-chassis channel"
             : "no multi-chassis channel carries a VLAN on both switches, so the disabled VLANs "
               "were not compared";
}

const char *outcome_name(std::optional<Outcome> outcome) {
  constexpr const char *names[] = {"agree", "disagree", "incomplete"};
  return outcome ? names[std::size_t(*outcome)] : "unknown";
}

const char *spanning_tree_name(SpanningTree spanning_tree) {
  constexpr const char *names[] = {"off", "rapid-pvst", "mst", "unknown"};
  return names[std::size_t(spanning_tree)];
}

std::string describe_differences(const PairReport &report) {
  const Summary summary = summarize(report.checks);
  std::vector<std::string> causes = count_differences(summary);
  const std::size_t missing = summary.missing[0] + summary.missing[1];
  if (missing > 0) causes.push_back(fmt::format("channels on one side only ({})", missing));
  if (summary.inconsistent > 0) {
    causes.push_back(fmt::format("inconsistent ports ({})", summary.inconsistent));
  }
  const Verdict verdict = find_verdict(report);
  for (const auto &[reason, text] :
       {std::pair{Reason::spanning_tree_off, "spanning tree is off on one side"},
        {Reason::not_checked, "not checked"},
        {Reason::warnings, "warnings remain"}}) {
    if (has_reason(verdict, reason)) causes.emplace_back(text);
  }
  return join(causes);
}

std::string describe_note(const NoteReport &report, const SideNames &names) {
  const Note &note = report.note;
  const std::string side = note.side ? names[*note.side] : "";
  switch (note.kind) {
    case NoteKind::spanning_tree_on_one_half:
      return "Spanning tree is enabled on " + side + " only.";
    case NoteKind::vlan_on_one_half:
      return vlans_text(note, names);
    case NoteKind::port_setting:
      return "The ports differ in what no parameter covers: " + fields_text(note, names) + ".";
    case NoteKind::spanning_tree_off_on_channel:
      return "Spanning tree is enabled on neither half.";
    case NoteKind::vlan_timer:
      return "Timers of twin VLANs differ: " + fields_text(note, names) + ".";
    case NoteKind::timer:
      return "Timers differ: " + fields_text(note, names) + ".";
    case NoteKind::domain:
      return "The multi-chassis domains differ: " + fields_text(note, names) + ".";
    case NoteKind::peers_do_not_cross:
      return "The switches do not name each other as peers: " + fields_text(note, names) + ".";
    case NoteKind::same_address:
      return "Both switches have the address " + value_text(note.fields[0].values[0]) + ".";
    case NoteKind::no_peer_link:
      return "The " + side + " switch has multi-chassis channels and no peer link.";
    case NoteKind::spanning_tree_off:
      return "Spanning tree is off on both switches: nothing runs.";
    case NoteKind::acceptance:
      return describe_problem(report);
  }
  return "";
}

std::string describe_notes(const NoteGroup &group, const SideNames &names) {
  return (group.channels.empty() ? "" : printable(group.channels) + ": ") +
         describe_note(*group.note, names);
}

const char *severity_name(NoteKind kind) {
  return is_warning_kind(kind) ? "warning" : "info";
}

std::string describe_record(const ParameterRecord &record) {
  return parameter_key(record.type) + (record.port.empty() ? "" : "@" + record.port);
}

std::string describe_subject(const ExpectationReport &expectation) {
  return (expectation.side ? std::string(switch_names[*expectation.side]) + " " : "") +
         expectation.key + (expectation.subject.empty() ? "" : " of " + expectation.subject);
}

std::string code_name(const ResultCode &result) {
  return result.code == 0 ? "ok" : result_name(result.code);
}

std::string code_name(const CheckCode &result) {
  return result_name(result.code);
}

std::string describe_finding(const Finding &finding) {
  const std::string text = std::visit(FindingToText{}, finding);
  return text.empty() ? "nothing" : text;
}

}  // namespace lab
