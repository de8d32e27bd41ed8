#include "report/acceptance.h"

#include <fnmatch.h>

#include <ctime>

#include "report/verdict.h"
#include "switch/names.h"
#include "text/yaml.h"

namespace lab {
namespace {

constexpr char unfinished_reason[] = "TODO";

bool matches(const std::string &pattern, const std::string &name) {
  return pattern == name || fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
}

bool matches_scope(const AcceptEntry &entry, const ScopeReport &scope) {
  return matches(entry.scope, scope.scope.name);
}

bool matches_values(const AcceptEntry &entry, const ParameterReport &parameter) {
  const auto texts = find_value_texts(parameter);
  for (std::size_t side = 0; side < texts.size(); ++side) {
    if (entry.values[side] && *entry.values[side] != texts[side]) return false;
  }
  return true;
}

// Marks what an entry is about; whether there was any. An expired entry marks nothing.
bool accept_parameters(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  bool has_matched = false;
  for (ScopeReport &scope : report.checks) {
    if (missing_side(scope) || !matches_scope(entry, scope)) continue;
    for (ParameterReport &parameter : scope.parameters) {
      if (parameter.type != entry.type || !is_different(parameter) ||
          !matches_values(entry, parameter)) {
        continue;
      }
      has_matched = true;
      if (is_expired || parameter.accepted) continue;
      parameter.accepted = entry.acceptance;
      parameter.fix.reset();
    }
  }
  return has_matched;
}

bool accept_missing_channels(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  bool has_matched = false;
  for (ScopeReport &scope : report.checks) {
    if (!missing_side(scope) || !matches_scope(entry, scope)) continue;
    has_matched = true;
    if (!is_expired && !scope.accepted) scope.accepted = entry.acceptance;
  }
  return has_matched;
}

bool accept_notes(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  bool has_matched = false;
  for (NoteReport &note : report.notes) {
    const std::string scope = note.note.channel.empty() ? PairScope{}.name : note.note.channel;
    if (note.note.kind != entry.note || !matches(entry.scope, scope)) continue;
    has_matched = true;
    if (!is_expired && !note.accepted) note.accepted = entry.acceptance;
  }
  return has_matched;
}

bool accept_incomplete(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  bool has_matched = false;
  for (IncompleteReport &incomplete : report.incomplete) {
    if (incomplete.reason != entry.incomplete) continue;
    has_matched = true;
    if (!is_expired && !incomplete.accepted) incomplete.accepted = entry.acceptance;
  }
  return has_matched;
}

bool accept_entry(const AcceptEntry &entry, bool is_expired, PairReport &report) {
  switch (entry.kind) {
    case AcceptEntry::Kind::parameter:
      return accept_parameters(entry, is_expired, report);
    case AcceptEntry::Kind::missing_channel:
      return accept_missing_channels(entry, is_expired, report);
    case AcceptEntry::Kind::note:
      return accept_notes(entry, is_expired, report);
    case AcceptEntry::Kind::incomplete:
      return accept_incomplete(entry, is_expired, report);
  }
  return false;
}

bool has_channel(const PairReport &report, const std::string &name) {
  for (const ScopeReport &scope : report.checks) {
    if (scope.scope.name == name && name != PairScope{}.name) return true;
  }
  return false;
}

}  // namespace

std::string format_today() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
  return text;
}

std::vector<bool> accept_differences(const std::vector<AcceptEntry> &entries,
                                     const std::string &today, PairReport &report) {
  std::vector<bool> matched(entries.size());
  std::vector<NoteReport> problems;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const AcceptEntry &entry = entries[i];
    if (!entry.pair.empty() && !matches(entry.pair, report.name)) continue;
    // ISO dates sort as texts.
    const bool is_expired = !entry.acceptance.until.empty() && entry.acceptance.until < today;
    matched[i] = accept_entry(entry, is_expired, report);
    // Of many pairs, an entry concerns those in which it matches.
    if (!matched[i] && report.is_one_of_many) continue;
    std::optional<AcceptanceProblem> problem;
    if (entry.acceptance.reason == unfinished_reason) problem = AcceptanceProblem::no_reason;
    if (!matched[i]) problem = AcceptanceProblem::matches_nothing;
    if (is_expired) problem = AcceptanceProblem::expired;
    if (!problem) continue;
    NoteReport note;
    note.note.kind = NoteKind::acceptance;
    note.note.channel = has_channel(report, entry.scope) ? entry.scope : "";
    note.problem = *problem;
    note.line = entry.line;
    note.until = entry.acceptance.until;
    problems.push_back(std::move(note));
  }
  report.notes.insert(report.notes.end(), problems.begin(), problems.end());
  return matched;
}

std::string format_accept_list(const PairReport &report) {
  std::string text = "# What may differ between two switches, for mcec-lab compare --accept.\n";
  std::string entries;
  const auto add = [&entries](const ScopeReport &scope, const std::string &subject) {
    entries += "- scope: " + yaml_text(scope.scope.name) + "\n" + subject +
               "  reason: " + unfinished_reason + "\n";
  };
  for (const ScopeReport &scope : report.checks) {
    if (is_agreed(find_verdict(scope))) continue;
    if (missing_side(scope)) {
      add(scope, "  channel: missing\n");
      continue;
    }
    for (const ParameterReport &parameter : scope.parameters) {
      if (!is_different(parameter) || parameter.accepted) continue;
      const auto texts = find_value_texts(parameter);
      const auto value = [&](std::size_t side) {
        return texts[side] ? yaml_text(*texts[side]) : std::string("null");
      };
      add(scope, "  parameter: " + parameter_key(parameter.type) + "\n  left: " + value(0) +
                     "\n  right: " + value(1) + "\n");
    }
  }
  return text + (entries.empty() ? "[]\n" : entries);
}

}  // namespace lab
