// Expectations of steps: reading them, and comparing them with the step's report.

#include <algorithm>
#include <set>

#include "report/verdict.h"
#include "scenario/steps.h"
#include "switch/values.h"

namespace lab {

struct ExpectationKind {
  const char *key;
  std::vector<std::string> actions;
  std::vector<Expected> (*read)(StepReader &reader, const YAML::Node &node);
  Finding (*find)(const StepReport &report, const Expected &expected, std::size_t side);
  bool is_of_pair = false;  // one value for both switches
};

namespace {

// --- reading ---

uint32_t read_code(StepReader &reader, const YAML::Node &node) {
  const std::string given = scalar_text(node);
  const auto code = find_result(given);
  if (!code) {
    reader.expected(node, "a result: " + one_of(result_keys(), given) + ", or a number");
  }
  return code.value_or(0);
}

// Reads a mapping with at least one entry.
template <class Each>
void read_mapping(StepReader &reader, const YAML::Node &node, const std::string &what, Each each) {
  reader.entries(node, what, each);
  if (node.IsMap() && node.size() == 0) reader.expected(node, what);
}

ResultCode read_result(StepReader &reader, const YAML::Node &node) {
  return {read_code(reader, node)};
}

std::string read_answer(StepReader &reader, const YAML::Node &node) {
  return reader.text(node, "an answer: accepted, none, or the message of a refusal");
}

TextsByType read_texts(StepReader &reader, const YAML::Node &node) {
  TextsByType texts;
  read_mapping(reader, node, "parameters and texts, for instance {stp-mode: MST}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 if (const Parameter *name = read_parameter_name(reader, key)) {
                   texts.emplace_back(name->type, reader.text(value, "a text"));
                 }
               });
  return texts;
}

std::vector<uint16_t> read_types(StepReader &reader, const YAML::Node &node) {
  std::set<uint16_t> types;
  if (!reader.sequence(node, "a list of parameters, for instance [stp-mode]")) return {};
  for (const auto &name : node) {
    if (const Parameter *known = read_parameter_name(reader, name)) types.insert(known->type);
  }
  return {types.begin(), types.end()};
}

Vlans read_twins(StepReader &reader, const YAML::Node &node) {
  return read_vlan_list(reader, node, "twin VLANs");
}

template <auto read>
std::vector<Expected> read_one(StepReader &reader, const YAML::Node &node) {
  return {Expected{.value = read(reader, node)}};
}

template <std::size_t... side>
std::vector<Expected> read_verdict(StepReader &reader, const YAML::Node &node) {
  return {Expected{.side = {side...}, .value = CheckCode{read_code(reader, node)}}};
}

std::vector<Expected> read_ports_verdicts(StepReader &reader, const YAML::Node &node) {
  std::vector<Expected> all;
  read_mapping(reader, node, "ports and verdicts, for instance {0x1000: agree}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 const std::vector<PortOfPair> ports = read_ports(reader, key, "a port");
                 if (ports.size() > 1) reader.expected(key, "one port");
                 for (const PortOfPair &port : ports) {
                   all.push_back({.subject = scope_of(port, reader.now).name,
                                  .value = CheckCode{read_code(reader, value)}});
                 }
               });
  return all;
}

std::vector<Expected> read_channels_verdicts(StepReader &reader, const YAML::Node &node) {
  std::vector<Expected> all;
  read_mapping(reader, node, "channels and verdicts, for instance {10: agree}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 all.push_back({.subject = read_channel_name(reader, key, scalar_text(key)),
                                .value = CheckCode{read_code(reader, value)}});
               });
  return all;
}

// Reads {left: [ifi-port-guard@0x1001]}.
std::vector<Expected> read_inconsistent(StepReader &reader, const YAML::Node &node) {
  std::vector<Expected> all;
  const std::vector<std::string> sides(switch_names.begin(), switch_names.end());
  if (!reader.mapping(node, "inconsistent ports", sides)) return all;
  for (std::size_t side = 0; side < sides.size(); ++side) {
    const YAML::Node records = node[sides[side]];
    if (records) all.push_back({.side = side, .value = read_records(reader, records)});
  }
  return all;
}

// --- finding the values in a report ---

SwitchReport get_switch_report(const StepReport &report, std::size_t side) {
  return report.switches[side].value_or(SwitchReport{});
}

Finding get_result(const StepReport &report, const Expected &, std::size_t side) {
  const auto result = get_switch_report(report, side).result;
  return result ? Finding(ResultCode{*result}) : Finding();
}

Finding get_answer(const StepReport &report, const Expected &, std::size_t side) {
  return describe_answer(get_switch_report(report, side));
}

Finding get_records(const StepReport &report, const Expected &, std::size_t side) {
  auto records = get_switch_report(report, side).records.value_or(std::vector<ParameterRecord>{});
  std::erase_if(records, [](const ParameterRecord &record) { return !record.is_valid; });
  return records;
}

bool has_text(uint16_t type, const std::optional<std::string> &found, const std::string &expected) {
  return found && is_same_text(parameter_key(type), *found, expected);
}

// Returns the text of each expected parameter; of several ports, the first unexpected text.
Finding get_texts(const StepReport &report, const Expected &expected, std::size_t side) {
  const SwitchReport answer = get_switch_report(report, side);
  std::vector<std::pair<uint32_t, std::string>> texts;
  for (const Entry &entry : answer.values.value_or(std::vector<Entry>{})) {
    texts.emplace_back(entry.type, display(entry.type, entry.value));
  }
  for (const DisplayRecord &record : answer.display.value_or(std::vector<DisplayRecord>{})) {
    texts.emplace_back(record.type, record.value);
  }
  TextsByType found;
  for (const auto &[type, wanted] : std::get<TextsByType>(expected.value)) {
    std::optional<std::string> &first = found.emplace_back(type, std::nullopt).second;
    for (const auto &[found_type, text] : texts) {
      if (found_type != type || (first && !has_text(type, first, *wanted))) continue;
      first = text;
    }
  }
  return found;
}

// Returns the code of the first scope that does not agree, or 0. Empty if no scope was checked.
Finding get_verdict(const StepReport &report, const Expected &, std::size_t side) {
  for (const ScopeReport &scope : *report.checks) {
    if (scope.codes[side] != 0) return CheckCode{scope.codes[side]};
  }
  return report.checks->empty() ? Finding() : CheckCode{0};
}

// Returns whether a scope is, or contains, the port or channel with a name.
bool has_subject(const ScopeReport &report, const std::string &name) {
  const PairScope &scope = report.scope;
  if (scope.name == name) return true;
  if (scope.kind != PairScope::Kind::of_channel) return false;
  return std::ranges::any_of(scope.ends, [&](const PairScope::End &end) {
    return (end.present && end.port_name == name) ||
           std::ranges::count(end.others, name, &PairScope::Member::name) > 0;
  });
}

Finding get_scope_verdict(const StepReport &report, const Expected &expected, std::size_t side) {
  Finding found;
  for (const ScopeReport &scope : *report.checks) {
    if (has_subject(scope, expected.subject)) found = CheckCode{scope.codes[side]};
  }
  return found;
}

// Returns the parameters that differ in any scope, in the order of their types.
Finding get_differing(const StepReport &report, const Expected &, std::size_t) {
  std::set<uint16_t> types;
  for (const ScopeReport &scope : *report.checks) {
    for (const ParameterReport &parameter : scope.parameters) {
      if (is_different(parameter)) types.insert(parameter.type);
    }
  }
  if (report.checks->empty()) return {};
  return std::vector<uint16_t>(types.begin(), types.end());
}

template <std::optional<Vlans> ScopeReport::*vlans>
Finding get_twins(const StepReport &report, const Expected &, std::size_t) {
  if (report.checks->empty() || !(report.checks->front().*vlans)) return {};
  return *(report.checks->front().*vlans);
}

Finding get_inconsistent(const StepReport &report, const Expected &, std::size_t side) {
  std::vector<ParameterRecord> found;
  for (const ScopeReport &scope : *report.checks) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      for (const uint16_t type : port.types) found.push_back({.type = type, .port = port.name});
    }
  }
  return found;
}

// --- kinds of expectations ---

const std::vector<ExpectationKind> &expectation_kinds() {
  static const std::vector<ExpectationKind> kinds = {
      {"answer", {"command"}, read_one<read_answer>, get_answer},
      {"result",
       {"command", "update", "cache-update", "delete", "rebuild", "report"},
       read_one<read_result>,
       get_result},
      {"records", {"command", "update"}, read_one<read_records>, get_records},
      {"values", {"command", "update"}, read_one<read_texts>, get_texts},
      {"texts", {"report"}, read_one<read_texts>, get_texts},
      {"verdict", {"check"}, read_verdict<>, get_verdict},
      {"left", {"check"}, read_verdict<0>, get_verdict},
      {"right", {"check"}, read_verdict<1>, get_verdict},
      {"differ", {"check"}, read_one<read_types>, get_differing, true},
      {"pass", {"check"}, read_one<read_twins>, get_twins<&ScopeReport::pass>, true},
      {"fail", {"check"}, read_one<read_twins>, get_twins<&ScopeReport::fail>, true},
      {"ports", {"check"}, read_ports_verdicts, get_scope_verdict},
      {"channels", {"check"}, read_channels_verdicts, get_scope_verdict},
      {"inconsistent", {"check"}, read_inconsistent, get_inconsistent},
  };
  return kinds;
}

// Returns the expected value of a key, or nullptr.
template <class Value>
const Value *find_expected(const std::vector<Expected> &expected, std::string_view key) {
  const auto *found = find_in(expected, [=](const Expected &one) { return key == one.kind->key; });
  return found != nullptr ? &std::get<Value>(found->value) : nullptr;
}

// Returns the reason why expectations exclude each other, or "".
std::string find_contradiction(const std::vector<Expected> &expected) {
  const auto *answer = find_expected<std::string>(expected, "answer");
  const auto *result = find_expected<ResultCode>(expected, "result");
  const auto *records = find_expected<std::vector<ParameterRecord>>(expected, "records");
  const auto *values = find_expected<TextsByType>(expected, "values");
  const auto *verdict = find_expected<CheckCode>(expected, "verdict");
  const auto *left = find_expected<CheckCode>(expected, "left");
  const auto *right = find_expected<CheckCode>(expected, "right");
  const auto *differ = find_expected<std::vector<uint16_t>>(expected, "differ");
  const auto *pass = find_expected<Vlans>(expected, "pass");
  const auto *fail = find_expected<Vlans>(expected, "fail");
  const bool agrees = verdict && verdict->code == 0;
  const Parameter *named = verdict ? find_mismatched_parameter(verdict->code) : nullptr;
  const std::pair<bool, const char *> contradictions[] = {
      {answer && result && (*answer == "accepted") != (result->code == 0),
       "a command is accepted exactly when its result is ok"},
      {records && records->empty() && values && !values->empty(),
       "values are returned with records only"},
      {pass && fail && (*pass & *fail).any(), "a VLAN passes or fails, not both"},
      {verdict && left && *left != *verdict,
       "'verdict' is the verdict of both switches, and 'left' has another one"},
      {verdict && right && *right != *verdict,
       "'verdict' is the verdict of both switches, and 'right' has another one"},
      {agrees && differ && !differ->empty(), "in a pair that agrees no parameter differs"},
      {agrees && fail && fail->any(), "no VLAN fails when the pair agrees"},
      {named && differ && std::ranges::count(*differ, named->type) == 0,
       "the parameter of the verdict is not in 'differ'"},
  };
  for (const auto &[is_found, why] : contradictions) {
    if (is_found) return why;
  }
  return "";
}

bool is_met(const Finding &expected, const Finding &found) {
  const auto *wanted = std::get_if<TextsByType>(&expected);
  if (wanted == nullptr) return found == expected;
  const auto &texts = std::get<TextsByType>(found);
  return std::equal(
      wanted->begin(), wanted->end(), texts.begin(), texts.end(),
      [](const auto &a, const auto &b) { return has_text(a.first, b.second, *a.second); });
}

}  // namespace

std::vector<std::string> expectation_keys(const std::string &action) {
  std::vector<std::string> keys;
  for (const ExpectationKind &kind : expectation_kinds()) {
    if (std::ranges::count(kind.actions, action) > 0) keys.emplace_back(kind.key);
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
    const std::string key = scalar_text(pair.first);
    if (std::ranges::count(keys, key) == 0) continue;
    const ExpectationKind *kind =
        find_in(expectation_kinds(), [&](const ExpectationKind &one) { return key == one.key; });
    for (Expected &one : kind->read(reader, pair.second)) {
      one.kind = kind;
      expected.push_back(std::move(one));
    }
  }
  const std::string why = reader.errors.size() == errors ? find_contradiction(expected) : "";
  if (!why.empty()) {
    reader.add_error(node, "found expectations that exclude each other: " + why,
                     "a possible outcome");
  }
  return expected;
}

void check_expectations(const Step &step, StepReport &report) {
  for (const Expected &expected : step.expected) {
    const ExpectationKind &kind = *expected.kind;
    const bool is_verdict = std::holds_alternative<CheckCode>(expected.value);
    for (std::size_t side = 0; side < (kind.is_of_pair ? 1 : step.on.size()); ++side) {
      if (!step.on[side] || expected.side.value_or(side) != side) continue;
      Finding found = kind.find(report, expected, side);
      report.expectations.push_back({.key = is_verdict ? "verdict" : kind.key,
                                     .side = kind.is_of_pair ? std::nullopt : std::optional(side),
                                     .subject = expected.subject,
                                     .expected = expected.value,
                                     .found = found,
                                     .is_met = is_met(expected.value, found)});
    }
  }
}

}  // namespace lab
