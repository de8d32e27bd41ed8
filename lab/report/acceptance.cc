#include "report/acceptance.h"

#include <fmt/chrono.h>
#include <fnmatch.h>

#include <algorithm>

#include "report/verdict.h"
#include "switch/state_file.h"

namespace lab {
namespace {

using AcceptKind = AcceptEntry::Kind;

constexpr char unfinished_reason[] = "TODO";

// --- reading ---

const Words incomplete_words = {{"no-channels", uint32_t(Incomplete::no_channels)},
                                {"no-twin-vlans", uint32_t(Incomplete::no_twin_vlans)}};

// An entry has exactly one of these keys.
const std::vector<std::string> subject_keys = {"parameter", "channel", "note", "incomplete"};

bool is_date(const std::string &text) {
  using namespace std::chrono;
  std::tm parts{};
  const char *end = strptime(text.c_str(), "%Y-%m-%d", &parts);
  if (end == nullptr || *end != '\0' || text.size() != 10) return false;
  return (year(parts.tm_year + 1900) / (parts.tm_mon + 1) / parts.tm_mday).ok();
}

void read_subject(Reader &reader, const YAML::Node &node, AcceptEntry &entry) {
  if (const YAML::Node key = node["parameter"]) {
    const Parameter *parameter = read_parameter_name(reader, key);
    if (parameter != nullptr) entry.type = parameter->type;
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (const YAML::Node value = node[switch_names[side]]) {
      entry.values[side] =
          value.IsNull() ? ValueText() : reader.text(value, "a value, or null: not sent");
    }
  }
  if (const YAML::Node channel = node["channel"]) {
    entry.kind = AcceptKind::missing_channel;
    if (scalar_text(channel) != "missing") reader.expected(channel, "missing");
  }
  if (const YAML::Node note = node["note"]) {
    entry.kind = AcceptKind::note;
    Words words;
    for (const std::string &key : note_keys()) words.emplace(key, words.size());
    entry.note = NoteKind(reader.word(note, "a kind of note", words, false));
  }
  if (const YAML::Node incomplete = node["incomplete"]) {
    entry.kind = AcceptKind::incomplete;
    entry.incomplete =
        Incomplete(reader.word(incomplete, "what was not compared", incomplete_words, false));
  }
}

void read_acceptance(Reader &reader, const YAML::Node &node, Acceptance &acceptance) {
  if (const YAML::Node reason = node["reason"]) {
    acceptance.reason = reader.text(reason, "a reason");
    if (reason.IsNull() || acceptance.reason.empty()) reader.expected(reason, "a reason");
  }
  if (const YAML::Node until = node["until"]) {
    acceptance.until = until.IsScalar() ? until.Scalar() : "";
    if (!is_date(acceptance.until)) reader.expected(until, "a date like 2026-12-31");
  }
}

AcceptEntry read_entry(Reader &reader, const YAML::Node &node) {
  constexpr char entry_name[] = "an accepted difference";
  constexpr char any_scope[] = "a scope: switch, a channel or a pattern";
  AcceptEntry entry;
  entry.line = node.Mark().line + 1;
  if (!reader.mapping(node, entry_name,
                      {"scope", "pair", "reason", "until", "parameter", "left", "right", "channel",
                       "note", "incomplete"})) {
    return entry;
  }
  if (const YAML::Node scope = node["scope"]) {
    entry.scope = reader.name(scope, any_scope);
    if (entry.scope.empty()) reader.expected(scope, any_scope);
  }
  if (const YAML::Node pair = node["pair"]) {
    entry.pair = reader.name(pair, "the name of a pair, or a pattern");
  }
  read_acceptance(reader, node, entry.acceptance);
  read_subject(reader, node, entry);
  reader.required(node, "reason", entry_name);
  const auto subjects =
      std::ranges::count_if(subject_keys, [&](const std::string &key) { return bool(node[key]); });
  if (subjects != 1) {
    reader.add_error(node, entry_name + (" with " + std::to_string(subjects)) + " subjects",
                     "one of " + one_of(subject_keys));
  } else if (entry.kind != AcceptKind::incomplete) {
    reader.required(node, "scope", entry_name);
  }
  for (const char *side : switch_names) {
    if (node[side] && !node["parameter"]) {
      reader.add_error(node[side], std::string("found '") + side + "' without 'parameter'",
                       "values of a parameter");
    }
  }
  return entry;
}

// --- accepting ---

bool matches(const std::string &pattern, const std::string &name) {
  return pattern == name || fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
}

bool matches_parameter(const AcceptEntry &entry, const ParameterReport &parameter) {
  if (parameter.type != entry.type || !is_different(parameter)) return false;
  const auto texts = find_value_texts(parameter);
  for (std::size_t side = 0; side < texts.size(); ++side) {
    if (entry.values[side] && *entry.values[side] != texts[side]) return false;
  }
  return true;
}

// Marks the differences that an entry matches, unless it has expired. Returns whether it matches.
bool accept_entry(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  bool has_matched = false;
  const auto accept = [&](std::optional<Acceptance> &accepted) {
    has_matched = true;
    if (!is_expired && !accepted) accepted = entry.acceptance;
  };
  for (ScopeReport &scope : report.checks) {
    const bool is_missing = missing_side(scope).has_value();
    if (!matches(entry.scope, scope.scope.name)) continue;
    if (entry.kind == AcceptKind::missing_channel && is_missing) accept(scope.accepted);
    for (ParameterReport &parameter : scope.parameters) {
      if (entry.kind != AcceptKind::parameter || is_missing) break;
      if (!matches_parameter(entry, parameter)) continue;
      accept(parameter.accepted);
      if (parameter.accepted) parameter.fix.reset();
    }
  }
  for (Note &note : report.notes) {
    const std::string scope = note.channel.empty() ? PairScope{}.name : note.channel;
    if (entry.kind == AcceptKind::note && note.kind == entry.note && matches(entry.scope, scope)) {
      accept(note.accepted);
    }
  }
  for (IncompleteReport &incomplete : report.incomplete) {
    if (entry.kind == AcceptKind::incomplete && incomplete.reason == entry.incomplete) {
      accept(incomplete.accepted);
    }
  }
  return has_matched;
}

bool has_channel(const PairReport &report, const std::string &name) {
  return name != PairScope{}.name &&
         std::ranges::any_of(report.checks,
                             [&](const ScopeReport &check) { return check.scope.name == name; });
}

}  // namespace

ReadAcceptList read_accept_list(const std::string &text) {
  ReadAcceptList read;
  Reader reader;
  read_yaml(
      text, "a file of accepted differences", reader,
      [&](const YAML::Node &root) {
        for (const auto &node : root) read.entries.push_back(read_entry(reader, node));
      },
      YamlRoot::list);
  read.errors = std::move(reader.errors);
  sort_errors(read.errors);
  return read;
}

std::string format_today() {
  return fmt::format("{:%Y-%m-%d}", fmt::localtime(std::time(nullptr)));
}

std::vector<bool> accept_differences(const std::vector<AcceptEntry> &entries,
                                     const std::string &today, PairReport &report) {
  std::vector<bool> matched(entries.size());
  std::vector<Note> problems;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const AcceptEntry &entry = entries[i];
    if (!entry.pair.empty() && !matches(entry.pair, report.name)) continue;
    // ISO dates compare correctly as strings.
    const bool is_expired = !entry.acceptance.until.empty() && entry.acceptance.until < today;
    matched[i] = accept_entry(entry, is_expired, report);
    // With many pairs, an entry need not match in each of them.
    if (!matched[i] && !report.name.empty()) continue;
    std::optional<AcceptanceProblem> problem;
    if (entry.acceptance.reason == unfinished_reason) problem = AcceptanceProblem::no_reason;
    if (!matched[i]) problem = AcceptanceProblem::matches_nothing;
    if (is_expired) problem = AcceptanceProblem::expired;
    if (!problem) continue;
    problems.push_back({.kind = NoteKind::acceptance,
                        .channel = has_channel(report, entry.scope) ? entry.scope : "",
                        .problem = *problem,
                        .line = entry.line,
                        .until = entry.acceptance.until});
  }
  report.notes.insert(report.notes.end(), problems.begin(), problems.end());
  return matched;
}

std::string format_accept_list(const PairReport &report) {
  std::string entries;
  const auto add = [&entries](const ScopeReport &scope, const std::string &subject) {
    entries += fmt::format("- scope: {}\n{}  reason: {}\n", yaml_text(scope.scope.name), subject,
                           unfinished_reason);
  };
  for (const ScopeReport &scope : report.checks) {
    if (is_agreed(scope)) continue;
    if (missing_side(scope)) {
      add(scope, "  channel: missing\n");
      continue;
    }
    for (const ParameterReport &parameter : scope.parameters) {
      if (!is_different(parameter) || parameter.accepted) continue;
      const auto texts = find_value_texts(parameter);
      const auto value = [&](std::size_t side) {
        return texts[side] ? yaml_text(*texts[side]) : "null";
      };
      add(scope, fmt::format("  parameter: {}\n  left: {}\n  right: {}\n",
                             parameter_key(parameter.type), value(0), value(1)));
    }
  }
  return "# Accepted differences between two switches, for mcec-lab compare --accept.\n" +
         (entries.empty() ? "[]\n" : entries);
}

}  // namespace lab
