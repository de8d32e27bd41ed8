#include "scenario/expectations.h"

#include <algorithm>

#include "output/told.h"
#include "switch/state_reader.h"
#include "switch/values.h"

namespace lab {

// One of the two switches, or what both tell of a step together.
struct ExpectationKind {
  const char *key;
  std::vector<std::string> actions;
  Json (*read)(StepReader &reader, const YAML::Node &node);
  // Add what was found to the expectations of the step, as often as it is expected.
  void (*hold)(const Json &expected, const Step &step, Json &told);
};

namespace {

// --- what was found, beside what was expected ---

void judge(Json &told, const std::string &what, const Json &expected, const Json &found,
           bool holds) {
  told["expectations"].push_back(
      {{"what", what}, {"expected", expected}, {"found", found}, {"met", holds}});
}

void judge(Json &told, const std::string &what, const Json &expected, const Json &found) {
  judge(told, what, expected, found, expected == found);
}

// Judge what each switch that a step is on says of something.
template <class Find>
void judge_each(const Json &expected, const Step &step, Json &told, const char *what, Find find) {
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (!step.on[i]) continue;
    const Json found = find(told["switches"][switch_names[i]]);
    judge(told, std::string(switch_names[i]) + " " + what, expected, found);
  }
}

// --- results and verdicts ---

Json read_result(StepReader &reader, const YAML::Node &node) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  const auto code = find_result(given);
  if (!code) {
    reader.expected(node, "a result: " + one_of(result_keys(), given) + ", or a number");
  }
  return result_name(code.value_or(0));
}

void hold_result(const Json &expected, const Step &step, Json &told) {
  // 0 is called so of whatever is asked, "agree" too.
  const Json name = expected == result_name(0) ? Json("ok") : expected;
  judge_each(name, step, told, "result", [](const Json &said) { return said["result"]["name"]; });
}

// "agree", or the verdict of the first scope that does not.
Json verdict_of(const Json &checks, const std::string &side) {
  for (const Json &check : checks) {
    const Json &verdict = check["verdicts"][side];
    if (verdict["code"] != 0) return verdict["name"];
  }
  return checks.empty() ? Json() : Json(result_name(0));
}

void hold_verdict_of(const std::string &side, const Json &expected, Json &told) {
  const Json found = verdict_of(told["checks"], side);
  judge(told, side + " verdict", expected, found);
}

void hold_verdict(const Json &expected, const Step &, Json &told) {
  for (const char *side : switch_names) hold_verdict_of(side, expected, told);
}

void hold_left(const Json &expected, const Step &, Json &told) {
  hold_verdict_of(switch_names[0], expected, told);
}

void hold_right(const Json &expected, const Step &, Json &told) {
  hold_verdict_of(switch_names[1], expected, told);
}

// --- of commands and messages ---

Json read_answer(StepReader &reader, const YAML::Node &node) {
  return reader.text(node, "an answer: accepted, none, or the message of a refusal");
}

void hold_answer(const Json &expected, const Step &step, Json &told) {
  judge_each(expected, step, told, "answer", [](const Json &said) { return said["answer"]; });
}

// A port as the document calls it, by its name or its index; "" when there can be none such.
std::string name_of_port(const StepReader &reader, const std::string &given) {
  const auto index = parse_number(given);
  for (const Settings &settings : reader.now) {
    const Port *port = index ? find_port(settings, *index) : find_port(settings, given);
    if (port != nullptr) return port_name(*port);
  }
  return index ? port_text(*index) : "";
}

// [stp-mode, ifi-port-type@0x1000]
Json read_records(StepReader &reader, const YAML::Node &node) {
  Json read = Json::array();
  const std::string example = "for instance [stp-mode, ifi-port-type@0x1000]";
  if (!reader.sequence(node, "a list of records, " + example)) return read;
  for (const auto &record : node) {
    const std::string given = reader.text(record, "a record");
    const std::size_t at = given.find('@');
    const ParameterName *known = find_parameter(std::string_view(given).substr(0, at));
    const std::string port = at == given.npos ? "" : name_of_port(reader, given.substr(at + 1));
    if (known == nullptr || known->is_global != port.empty()) {
      reader.expected(record,
                      "a parameter of the switch, or one of an interface and its port, " + example);
      continue;
    }
    read.push_back(known->is_global ? known->key : known->key + "@" + port);
  }
  return read;
}

void hold_records(const Json &expected, const Step &step, Json &told) {
  judge_each(expected, step, told, "records", [](const Json &said) {
    Json names = Json::array();
    for (const Json &record : said.value("records", Json::array())) {
      if (record.contains("valid")) continue;
      const std::string key = record["parameter"];
      names.push_back(record["port"].is_null() ? key
                                               : key + "@" + record["port"].get<std::string>());
    }
    return names;
  });
}

// {stp-mode: MST, ...}
Json read_texts(StepReader &reader, const YAML::Node &node) {
  Json read = Json::object();
  const std::string what = "parameters and texts, for instance {stp-mode: MST}";
  reader.entries(node, what, [&](const YAML::Node &key, const YAML::Node &value) {
    if (const ParameterName *name = read_parameter_name(reader, key)) {
      read[name->key] = reader.text(value, "a text");
    }
  });
  if (node.IsMap() && node.size() == 0) reader.expected(node, what);
  return read;
}

// Of each parameter named, its text in a list of the document; of several ports, the first that is
// not as wanted.
void hold_texts(const Json &expected, const Step &step, Json &told, const char *what,
                const char *list_key, const char *text_key) {
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (!step.on[i]) continue;
    const Json list = told["switches"][switch_names[i]].value(list_key, Json::array());
    Json found = Json::object();
    bool holds = true;
    for (const auto &[key, text] : expected.items()) {
      Json &said = found[key];
      bool as_wanted = false;
      for (const Json &item : list) {
        if (item["parameter"] != key || (!said.is_null() && !as_wanted)) continue;
        said = item[text_key];
        as_wanted = same_text(key, said.get<std::string>(), text.get<std::string>());
      }
      holds = holds && as_wanted;
    }
    judge(told, std::string(switch_names[i]) + " " + what, expected, found, holds);
  }
}

void hold_values(const Json &expected, const Step &step, Json &told) {
  hold_texts(expected, step, told, "values", "values", "text");
}

void hold_report(const Json &expected, const Step &step, Json &told) {
  hold_texts(expected, step, told, "texts", "report", "value");
}

// --- of checks ---

Json read_parameter_list(StepReader &reader, const YAML::Node &node) {
  std::vector<const ParameterName *> read;
  if (reader.sequence(node, "a list of parameters, for instance [stp-mode]")) {
    for (const auto &name : node) {
      if (const ParameterName *known = read_parameter_name(reader, name)) read.push_back(known);
    }
  }
  std::sort(read.begin(), read.end(),
            [](const ParameterName *a, const ParameterName *b) { return a->type < b->type; });
  read.erase(std::unique(read.begin(), read.end()), read.end());
  Json keys = Json::array();
  for (const ParameterName *parameter : read) keys.push_back(parameter->key);
  return keys;
}

// Parameters that are out of step, in the order of their types, over all scopes of a check.
void hold_differ(const Json &expected, const Step &, Json &told) {
  std::map<uint32_t, std::string> keys;
  for (const Json &check : told["checks"]) {
    for (const Json &parameter : check["parameters"]) {
      if (is_out_of_step(parameter)) keys[parameter["type"]] = parameter["parameter"];
    }
  }
  Json found = Json::array();
  for (const auto &[type, key] : keys) found.push_back(key);
  judge(told, "differ", expected, told["checks"].empty() ? Json() : found);
}

Json read_twins(StepReader &reader, const YAML::Node &node) {
  return vlan_text(read_vlan_list(reader, node, "twin VLANs"));
}

void hold_twins(const char *key, const Json &expected, Json &told) {
  const Json &checks = told["checks"];
  judge(told, key, expected, checks.empty() ? Json() : checks[0].value(key, Json()));
}

void hold_pass(const Json &expected, const Step &, Json &told) {
  hold_twins("pass", expected, told);
}

void hold_fail(const Json &expected, const Step &, Json &told) {
  hold_twins("fail", expected, told);
}

// {0x1000: agree}: ports and their verdicts.
Json read_ports_verdicts(StepReader &reader, const YAML::Node &node) {
  Json read = Json::object();
  const std::string what = "ports and verdicts, for instance {0x1000: agree}";
  reader.entries(node, what, [&](const YAML::Node &key, const YAML::Node &value) {
    const std::vector<PortOfPair> ports = read_ports(reader, key, "a port");
    if (ports.size() > 1) reader.expected(key, "one port");
    for (const PortOfPair &port : ports) {
      read[scope_of(port, reader.now).name] = read_result(reader, value);
    }
  });
  if (node.IsMap() && node.size() == 0) reader.expected(node, what);
  return read;
}

// {10: agree}: channels and their verdicts.
Json read_channel_verdicts(StepReader &reader, const YAML::Node &node) {
  Json read = Json::object();
  const std::string what = "channels and verdicts, for instance {10: agree}";
  reader.entries(node, what, [&](const YAML::Node &key, const YAML::Node &value) {
    const std::string given = key.IsScalar() ? key.Scalar() : "";
    read[read_channel_name(reader, key, given)] = read_result(reader, value);
  });
  if (node.IsMap() && node.size() == 0) reader.expected(node, what);
  return read;
}

// Does a scope of the document look at a port? A channel does at all of its ports.
bool looks_at(const Json &check, const std::string &name) {
  const Json speakers = check.value("ports", Json::object());
  if (check["scope"] == name ||
      std::find(speakers.begin(), speakers.end(), name) != speakers.end()) {
    return true;
  }
  const Json members = check.value("members", Json::object());
  for (const Json &ports : members) {
    if (std::find(ports.begin(), ports.end(), name) != ports.end()) return true;
  }
  return false;
}

void hold_scopes(const Json &expected, const Step &, Json &told) {
  for (const auto &[name, verdict] : expected.items()) {
    for (const std::string side : switch_names) {
      Json found;
      for (const Json &check : told["checks"]) {
        if (looks_at(check, name)) found = check["verdicts"][side]["name"];
      }
      judge(told, side + " verdict of " + name, verdict, found);
    }
  }
}

// {left: [ifi-port-guard@0x1001]}: ports that are not set like the one that speaks for their channel.
Json read_inconsistent(StepReader &reader, const YAML::Node &node) {
  Json read = Json::object();
  if (!reader.mapping(node, "inconsistent ports", {switch_names.begin(), switch_names.end()}))
    return read;
  for (const char *side : switch_names) {
    if (node[side]) read[side] = read_records(reader, node[side]);
  }
  return read;
}

void check_inconsistent(const Json &expected, const Step &, Json &told) {
  for (const auto &[side, wanted] : expected.items()) {
    Json found = Json::array();
    for (const Json &check : told["checks"]) {
      if (!check.contains("inconsistent") || !check["inconsistent"].contains(side)) continue;
      for (const Json &port : check["inconsistent"][side]) {
        for (const Json &key : port["parameters"]) {
          found.push_back(key.get<std::string>() + "@" + port["port"].get<std::string>());
        }
      }
    }
    judge(told, side + " inconsistent", wanted, found);
  }
}

// --- the rows ---

const std::vector<ExpectationKind> &kinds() {
  static const std::vector<ExpectationKind> all = {
      {"answer", {"command"}, read_answer, hold_answer},
      {"result",
       {"command", "update", "cache-update", "delete", "rebuild", "report"},
       read_result,
       hold_result},
      {"records", {"command", "update"}, read_records, hold_records},
      {"values", {"command", "update"}, read_texts, hold_values},
      {"texts", {"report"}, read_texts, hold_report},
      {"verdict", {"check"}, read_result, hold_verdict},
      {"left", {"check"}, read_result, hold_left},
      {"right", {"check"}, read_result, hold_right},
      {"differ", {"check"}, read_parameter_list, hold_differ},
      {"pass", {"check"}, read_twins, hold_pass},
      {"fail", {"check"}, read_twins, hold_fail},
      {"ports", {"check"}, read_ports_verdicts, hold_scopes},
      {"channels", {"check"}, read_channel_verdicts, hold_scopes},
      {"inconsistent", {"check"}, read_inconsistent, check_inconsistent},
  };
  return all;
}

const ExpectationKind *find_kind(const std::string &action, const std::string &key) {
  for (const ExpectationKind &kind : kinds()) {
    const bool is_for =
        std::find(kind.actions.begin(), kind.actions.end(), action) != kind.actions.end();
    if (is_for && key == kind.key) return &kind;
  }
  return nullptr;
}

// --- expectations that cannot hold together ---

// What stands under a key, null when nothing does.
Json wanted(const std::vector<Expected> &expected, std::string_view key) {
  for (const Expected &one : expected) {
    if (key == one.kind->key) return one.value;
  }
  return nullptr;
}

// Why they cannot; empty: they can.
std::string contradiction(const std::vector<Expected> &expected) {
  const Json verdict = wanted(expected, "verdict");
  const Json differ = wanted(expected, "differ");
  const Json answer = wanted(expected, "answer");
  const Json result = wanted(expected, "result");
  const Json agrees = result_name(0);
  const auto is_something = [](const Json &value) { return !value.is_null() && !value.empty(); };
  for (const char *side : switch_names) {
    const Json of_side = wanted(expected, side);
    if (!verdict.is_null() && !of_side.is_null() && verdict != of_side) {
      return std::string("'verdict' is that of both switches, and '") + side +
             "' says something else";
    }
  }
  if (verdict == agrees && is_something(differ)) return "a pair that agrees differs in nothing";
  if (verdict == agrees && is_something(wanted(expected, "fail")) &&
      wanted(expected, "fail") != "") {
    return "no VLAN fails when the pair agrees";
  }
  if (!verdict.is_null() && !differ.is_null()) {
    const ParameterName *named =
        parameter_of_mismatch(find_result(verdict.get<std::string>()).value_or(0));
    if (named != nullptr && std::find(differ.begin(), differ.end(), named->key) == differ.end()) {
      return "the verdict names a parameter that 'differ' does not";
    }
  }
  const Json pass = wanted(expected, "pass");
  const Json fail = wanted(expected, "fail");
  if (!pass.is_null() && !fail.is_null()) {
    const auto vlans = [](const Json &text) {
      return vlans_of(parse_vlans(text.get<std::string>()).ranges);
    };
    if ((vlans(pass) & vlans(fail)).any()) return "a VLAN passes or fails, not both";
  }
  if (!answer.is_null() && !result.is_null() && (answer == "accepted") != (result == agrees)) {
    return "a command is accepted exactly when its result is ok";
  }
  const Json records = wanted(expected, "records");
  if (!records.is_null() && records.empty() && is_something(wanted(expected, "values"))) {
    return "values are handed out with records only";
  }
  return "";
}

}  // namespace

std::vector<std::string> expectation_keys(const std::string &action) {
  std::vector<std::string> keys;
  for (const ExpectationKind &kind : kinds()) {
    if (find_kind(action, kind.key) != nullptr) keys.emplace_back(kind.key);
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
    const ExpectationKind *kind = find_kind(action, scalar_text(pair.first));
    if (kind != nullptr) expected.push_back({kind, kind->read(reader, pair.second)});
  }
  if (reader.errors.size() == errors) {
    const std::string why = contradiction(expected);
    if (!why.empty()) {
      reader.add_error(node, "found expectations that cannot hold together: " + why,
                       "what can be the outcome");
    }
  }
  return expected;
}

void hold(const Step &step, Json &told) {
  for (const Expected &expected : step.expected) expected.kind->hold(expected.value, step, told);
}

bool all_hold(const Json &outcome) {
  for (const Json &step : outcome["steps"]) {
    for (const Json &expectation : step.value("expectations", Json::array())) {
      if (!expectation["met"]) return false;
    }
  }
  return true;
}

}  // namespace lab
