#include "scenario/expectations.h"

#include <algorithm>

namespace lab {
namespace {

const std::vector<ExpectationKind> &expectation_kinds() {
  static const std::vector<ExpectationKind> kinds = {
      {"answer", {"command"}, read_expected_answer, check_answer},
      {"result",
       {"command", "update", "cache-update", "delete", "rebuild", "report"},
       read_expected_result,
       check_result},
      {"records", {"command", "update"}, read_expected_records, check_records},
      {"values", {"command", "update"}, read_expected_texts, check_values},
      {"texts", {"report"}, read_expected_texts, check_display},
      {"verdict", {"check"}, read_expected_code, check_verdict},
      {"left", {"check"}, read_expected_code, check_verdict},
      {"right", {"check"}, read_expected_code, check_verdict},
      {"differ", {"check"}, read_expected_types, check_differing},
      {"pass", {"check"}, read_expected_vlans, check_passing_vlans},
      {"fail", {"check"}, read_expected_vlans, check_failing_vlans},
      {"ports", {"check"}, read_expected_ports, check_scope_verdict},
      {"channels", {"check"}, read_expected_channels, check_scope_verdict},
      {"inconsistent", {"check"}, read_expected_inconsistent, check_inconsistent},
  };
  return kinds;
}

const ExpectationKind *find_expectation(const std::string &action, const std::string &key) {
  for (const ExpectationKind &kind : expectation_kinds()) {
    const bool is_for =
        std::find(kind.actions.begin(), kind.actions.end(), action) != kind.actions.end();
    if (is_for && key == kind.key) return &kind;
  }
  return nullptr;
}

// --- expectations that contradict each other ---

// What is expected under a key; nullptr: nothing.
template <class Value>
const Value *find_expected(const std::vector<Expected> &expected, std::string_view key) {
  for (const Expected &one : expected) {
    if (key == one.kind->key) return &std::get<Value>(one.value);
  }
  return nullptr;
}

// Why a check cannot come out so; empty: it can.
std::string find_contradiction_of_check(const std::vector<Expected> &expected) {
  const auto *verdict = find_expected<CheckCode>(expected, "verdict");
  const auto *differ = find_expected<std::vector<uint16_t>>(expected, "differ");
  const auto *pass = find_expected<Vlans>(expected, "pass");
  const auto *fail = find_expected<Vlans>(expected, "fail");
  if (pass != nullptr && fail != nullptr && (*pass & *fail).any()) {
    return "a VLAN passes or fails, not both";
  }
  if (verdict == nullptr) return "";
  for (const char *side : switch_names) {
    const auto *of_side = find_expected<CheckCode>(expected, side);
    if (of_side != nullptr && *of_side != *verdict) {
      return std::string("'verdict' is that of both switches, and '") + side +
             "' says something else";
    }
  }
  const bool agrees = verdict->code == 0;
  if (agrees && differ != nullptr && !differ->empty()) {
    return "a pair that agrees differs in nothing";
  }
  if (agrees && fail != nullptr && fail->any()) return "no VLAN fails when the pair agrees";
  const Parameter *named = parameter_of_mismatch(verdict->code);
  if (named != nullptr && differ != nullptr &&
      std::find(differ->begin(), differ->end(), named->type) == differ->end()) {
    return "the verdict names a parameter that 'differ' does not";
  }
  return "";
}

std::string find_contradiction(const std::vector<Expected> &expected) {
  const auto *answer = find_expected<std::string>(expected, "answer");
  const auto *result = find_expected<ResultCode>(expected, "result");
  if (answer != nullptr && result != nullptr && (*answer == "accepted") != (result->code == 0)) {
    return "a command is accepted exactly when its result is ok";
  }
  const auto *records = find_expected<std::vector<ParameterRecord>>(expected, "records");
  const auto *values = find_expected<TextsByType>(expected, "values");
  if (records != nullptr && records->empty() && values != nullptr && !values->empty()) {
    return "values are handed out with records only";
  }
  return find_contradiction_of_check(expected);
}

}  // namespace

std::vector<std::string> expectation_keys(const std::string &action) {
  std::vector<std::string> keys;
  for (const ExpectationKind &kind : expectation_kinds()) {
    if (find_expectation(action, kind.key) != nullptr) keys.emplace_back(kind.key);
  }
  return keys;
}

std::vector<Expected> read_expectations(StepReader &reader, const YAML::Node &node,
                                        const std::string &action) {
  std::vector<Expected> expected;
  const std::vector<std::string> keys = expectation_keys(action);
  if (!reader.mapping(node, "the expectations of '" + action + "'", keys)) return expected;
  if (node.size() == 0) reader.expected(node, "at least one of " + one_of(keys));
  const std::size_t errors = reader.errors.size();
  for (const auto &pair : node) {
    const ExpectationKind *kind = find_expectation(action, scalar_text(pair.first));
    if (kind != nullptr) kind->read(reader, pair.second, *kind, expected);
  }
  if (reader.errors.size() == errors) {
    const std::string why = find_contradiction(expected);
    if (!why.empty()) {
      reader.add_error(node, "found expectations that cannot hold together: " + why,
                       "what can be the outcome");
    }
  }
  return expected;
}

void check_expectations(const Step &step, StepReport &report) {
  for (const Expected &expected : step.expected) expected.kind->check(expected, step, report);
}

}  // namespace lab
