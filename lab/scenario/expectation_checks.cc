// How what is expected of a step is checked.

#include <algorithm>
#include <set>

#include "scenario/expectations.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr char verdict_key[] = "verdict";

ExpectationReport &add_finding(const Expected &expected, const char *key,
                               std::optional<std::size_t> side, Finding found, StepReport &report) {
  const bool is_met = found == expected.value;
  report.expectations.push_back({.key = key,
                                 .side = side,
                                 .subject = expected.subject,
                                 .expected = expected.value,
                                 .found = std::move(found),
                                 .is_met = is_met});
  return report.expectations.back();
}

// Check what each switch that a step is on answered.
template <class Find>
void check_each(const Expected &expected, const Step &step, StepReport &report, Find find) {
  for (std::size_t side = 0; side < report.switches.size(); ++side) {
    if (!step.on[side]) continue;
    add_finding(expected, expected.kind->key, side, find(report.switches[side]), report);
  }
}

using SwitchAnswer = std::optional<SwitchReport>;

// --- texts ---

struct ShownValue {
  uint32_t type;
  std::string text;
};

// Of each parameter named, its text among those that are shown; of several ports, the first that is
// not as expected.
void check_texts(const Expected &expected, const Step &step, StepReport &report,
                 std::vector<ShownValue> (*list)(const SwitchReport &)) {
  const auto &wanted = std::get<TextsByType>(expected.value);
  for (std::size_t side = 0; side < report.switches.size(); ++side) {
    if (!step.on[side]) continue;
    const auto &answer = report.switches[side];
    const std::vector<ShownValue> shown = answer ? list(*answer) : std::vector<ShownValue>{};
    TextsByType found;
    bool is_met = true;
    for (const auto &[type, text] : wanted) {
      std::optional<std::string> first;
      bool is_as_wanted = false;
      for (const ShownValue &value : shown) {
        if (value.type != type || (first && !is_as_wanted)) continue;
        first = value.text;
        is_as_wanted = same_text(parameter_key(type), value.text, *text);
      }
      found.emplace_back(type, first);
      is_met = is_met && is_as_wanted;
    }
    add_finding(expected, expected.kind->key, side, found, report).is_met = is_met;
  }
}

// --- checks ---

// 0, or the code of the first scope that does not agree; nothing: no scope was checked.
Finding find_code(const std::vector<ScopeReport> &checks, std::size_t side) {
  for (const ScopeReport &scope : checks) {
    if (scope.codes[side] != 0) return CheckCode{scope.codes[side]};
  }
  return checks.empty() ? Finding() : CheckCode{0};
}

// Is a port or a channel of that name in a scope? All ports of a channel are.
bool has_subject(const ScopeReport &report, const std::string &name) {
  const PairScope &scope = report.scope;
  if (scope.name == name) return true;
  if (scope.kind != PairScope::Kind::of_channel) return false;
  return std::any_of(scope.ends.begin(), scope.ends.end(), [&](const PairScope::End &end) {
    return (end.present && end.port_name == name) ||
           std::any_of(end.others.begin(), end.others.end(),
                       [&](const PairScope::Member &member) { return member.name == name; });
  });
}

void check_twins(const Expected &expected, StepReport &report,
                 std::optional<Vlans> ScopeReport::*vlans) {
  Finding found;
  if (!report.checks->empty() && (report.checks->front().*vlans)) {
    found = *(report.checks->front().*vlans);
  }
  add_finding(expected, expected.kind->key, {}, std::move(found), report);
}

}  // namespace

void check_result(const Expected &expected, const Step &step, StepReport &report) {
  check_each(expected, step, report, [](const SwitchAnswer &answer) {
    return answer && answer->result ? Finding(ResultCode{*answer->result}) : Finding();
  });
}

void check_answer(const Expected &expected, const Step &step, StepReport &report) {
  check_each(expected, step, report, [](const SwitchAnswer &answer) -> Finding {
    if (!answer || !answer->answer) return std::string("none");
    return answer->answer->is_accepted ? std::string("accepted") : answer->answer->text;
  });
}

void check_records(const Expected &expected, const Step &step, StepReport &report) {
  check_each(expected, step, report, [](const SwitchAnswer &answer) -> Finding {
    std::vector<ParameterRecord> records;
    if (answer && answer->records) records = *answer->records;
    std::erase_if(records, [](const ParameterRecord &record) { return !record.is_valid; });
    return records;
  });
}

void check_values(const Expected &expected, const Step &step, StepReport &report) {
  check_texts(expected, step, report, [](const SwitchReport &answer) {
    std::vector<ShownValue> shown;
    for (const Entry &entry : answer.values.value_or(std::vector<Entry>{})) {
      shown.push_back({entry.type, display(entry.type, entry.value)});
    }
    return shown;
  });
}

void check_display(const Expected &expected, const Step &step, StepReport &report) {
  check_texts(expected, step, report, [](const SwitchReport &answer) {
    std::vector<ShownValue> shown;
    for (const DisplayRecord &record : answer.display.value_or(std::vector<DisplayRecord>{})) {
      shown.push_back({record.type, record.value});
    }
    return shown;
  });
}

void check_verdict(const Expected &expected, const Step &, StepReport &report) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (expected.side.value_or(side) != side) continue;
    add_finding(expected, verdict_key, side, find_code(*report.checks, side), report);
  }
}

// Parameters that differ, in the order of their types, over all scopes of a check.
void check_differing(const Expected &expected, const Step &, StepReport &report) {
  std::set<uint16_t> types;
  for (const ScopeReport &scope : *report.checks) {
    for (const ParameterReport &parameter : scope.parameters) {
      if (is_different(parameter)) types.insert(parameter.type);
    }
  }
  Finding found;
  if (!report.checks->empty()) found = std::vector<uint16_t>(types.begin(), types.end());
  add_finding(expected, expected.kind->key, {}, std::move(found), report);
}

void check_passing_vlans(const Expected &expected, const Step &, StepReport &report) {
  check_twins(expected, report, &ScopeReport::pass);
}

void check_failing_vlans(const Expected &expected, const Step &, StepReport &report) {
  check_twins(expected, report, &ScopeReport::fail);
}

void check_scope_verdict(const Expected &expected, const Step &, StepReport &report) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    Finding found;
    for (const ScopeReport &scope : *report.checks) {
      if (has_subject(scope, expected.subject)) found = CheckCode{scope.codes[side]};
    }
    add_finding(expected, verdict_key, side, std::move(found), report);
  }
}

void check_inconsistent(const Expected &expected, const Step &, StepReport &report) {
  std::vector<ParameterRecord> found;
  for (const ScopeReport &scope : *report.checks) {
    for (const InconsistentPort &port : scope.inconsistent[*expected.side]) {
      for (const uint16_t type : port.types) found.push_back({.type = type, .port = port.name});
    }
  }
  add_finding(expected, expected.kind->key, expected.side, std::move(found), report);
}

}  // namespace lab
