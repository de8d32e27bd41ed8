#include "scenario/steps.h"

#include <algorithm>
#include <csignal>

#include "scenario/expectations.h"
#include "standin.h"
#include "switch/state_reader.h"

namespace lab {
namespace {

const Words operation_words = {
    {"allocation", STANDIN_ALLOC},     {"tlv-add", STANDIN_TLV_ADD},
    {"tlv-read", STANDIN_TLV_NEXT},    {"tlv-find", STANDIN_TLV_FIND},
    {"history", STANDIN_HISTORY_INIT}, {"membership", STANDIN_MEMBERSHIP}};
const Words signal_words = {
    {"ABRT", SIGABRT}, {"SEGV", SIGSEGV}, {"KILL", SIGKILL}, {"BUS", SIGBUS}};

// --- what is asked ---

// Let each switch that a step is on be asked for one scope.
template <class Asked>
void ask_of_switch(Step &step, Asked asked) {
  asked.scope = {};
  Requests requests;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (step.on[i]) requests[i] = Request{false, asked};
  }
  step.requests.push_back(std::move(requests));
}

template <class Asked>
void ask_of_ports(Step &step, const std::vector<PortOfPair> &ports, Asked asked) {
  for (const PortOfPair &port : ports) {
    Requests requests;
    for (std::size_t i = 0; i < requests.size(); ++i) {
      if (!step.on[i] || !port[i]) continue;
      asked.scope = {false, *port[i]};
      requests[i] = Request{false, asked};
    }
    step.requests.push_back(std::move(requests));
  }
}

// Of "switch", or of ports.
template <class Asked>
void ask_of(StepReader &reader, const YAML::Node &value, const std::string &what, Step &step,
            Asked asked) {
  if (scalar_text(value) == "switch") return ask_of_switch(step, asked);
  if (!value.IsScalar() || value.Scalar().empty()) {
    return reader.expected(value, what + ": switch, or ports");
  }
  ask_of_ports(step, read_ports(reader, value, what + " (switch, or ports)"), asked);
}

// Of the switch, unless the step has a key "port".
template <class Asked>
void ask_by_port(StepReader &reader, const YAML::Node &node, Step &step, Asked asked) {
  if (!node["port"]) return ask_of_switch(step, asked);
  ask_of_ports(step, read_ports(reader, node["port"], "port"), asked);
}

// The same of each switch, whatever it is about.
template <class Asked>
void ask_each(Step &step, const Asked &asked) {
  Requests requests;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (step.on[i]) requests[i] = Request{false, asked};
  }
  step.requests.push_back(std::move(requests));
}

std::string of_port(const YAML::Node &node) {
  return node["port"] ? " of port " + scalar_text(node["port"]) : "";
}

// --- the steps ---

template <class Asked>
void read_update(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Asked update;
  update.entries = read_parameters(reader, value, step.action);
  std::string keys;
  for (const Entry &entry : update.entries) {
    keys += (keys.empty() ? " " : ", ") + parameter_key(entry.type);
  }
  step.summary = step.action + of_port(node) + ":" + keys;
  ask_by_port(reader, node, step, std::move(update));
}

void read_delete(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  ask_of(reader, value, "what to delete", step, Delete{});
}

void read_report(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  ask_of(reader, value, "what to report", step, Report{});
}

void read_export(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  if (node["as"]) {
    step.saved_as = reader.text(node["as"], "a name for the array");
    reader.saved.insert(step.saved_as);
  }
  ask_of(reader, value, "what to export", step, Export{});
  if (step.requests.size() > 1) reader.expected(value, "the switch or one port");
}

void read_rebuild(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  step.rebuilt_from = reader.text(value, "the name of an exported array");
  if (!reader.saved.contains(step.rebuilt_from)) {
    const std::vector<std::string> names(reader.saved.begin(), reader.saved.end());
    reader.expected(value, names.empty()
                               ? "an array, but no step before has exported one 'as' a name"
                               : "an array that a step before has exported: " +
                                     one_of(names, step.rebuilt_from));
  }
  step.summary = "rebuild" + of_port(node) + " from " + step.rebuilt_from;
  ask_by_port(reader, node, step, Rebuild{});
}

void read_check(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  CheckPlan plan;
  const std::string given = value.IsScalar() ? value.Scalar() : "";
  const std::string what = "what to check: all, switch, channel and its number or name, or ports";
  if (given == "all") {
    plan.of_switch = plan.all_channels = true;
  } else if (given == "switch") {
    plan.of_switch = true;
  } else if (given.starts_with(channel_word)) {
    plan.channels = {read_channel_name(reader, value, given.substr(channel_word.size()))};
  } else if (given.empty()) {
    reader.expected(value, what);
  } else {
    for (const PortOfPair &port : read_ports(reader, value, what)) {
      plan.ports.push_back(scope_of(port, reader.now));
    }
  }
  plan.twins =
      node["twin-vlans"] ? read_vlan_list(reader, node["twin-vlans"], "twin-vlans") : reader.twins;
  step.check = std::move(plan);
}

void read_change_step(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  const std::array<WorldChange, 2> changes = read_change(reader, value, step.on, reader.now);
  Requests requests;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (step.on[i]) requests[i] = Request{false, ChangeWorld{changes[i]}};
  }
  step.requests.push_back(std::move(requests));
  step.summary = "change";
  for (const auto &pair : value.IsMap() ? value : YAML::Node(YAML::NodeType::Map)) {
    step.summary += " " + scalar_text(pair.first);
  }
}

void read_fail(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Fail fail{reader.word(value, "what is to fail", operation_words, false), 1, 1};
  if (node["nth"]) fail.nth = reader.number(node["nth"], "nth", 1);
  if (node["times"]) fail.times = reader.number(node["times"], "times");
  step.summary = "fail " + scalar_text(value) + " " + std::to_string(fail.nth);
  ask_each(step, fail);
}

void read_crash(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  ask_each(step, Crash{int32_t(reader.word(value, "a signal", signal_words, false))});
}

// --- the rows ---

struct StepKind {
  const char *action;
  std::vector<std::string> keys;  // in addition to the action's own, "on", "note" and "expect"
  void (*read)(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step);
  bool always_on_both = false;
};

const std::vector<StepKind> &step_kinds() {
  static const std::vector<StepKind> kinds = {
      {"command", command_step_keys(), read_command},
      {"update", {"port"}, read_update<Update>},
      {"cache-update", {"port"}, read_update<CacheUpdate>},
      {"delete", {}, read_delete},
      {"export", {"as"}, read_export},
      {"rebuild", {"port"}, read_rebuild},
      {"check", {"twin-vlans"}, read_check, true},
      {"report", {}, read_report},
      {"change", {}, read_change_step},
      {"fail", {"nth", "times"}, read_fail},
      {"crash", {}, read_crash},
  };
  return kinds;
}

const StepKind *kind_of(const YAML::Node &key) {
  for (const StepKind &kind : step_kinds()) {
    if (key.IsScalar() && key.Scalar() == kind.action) return &kind;
  }
  return nullptr;
}

// The action of a step, with its value; nullptr when it has none.
const StepKind *find_action(StepReader &reader, const YAML::Node &node, YAML::Node &value) {
  const StepKind *kind = nullptr;
  std::vector<std::string> others;
  for (const auto &pair : node.IsMap() ? node : YAML::Node(YAML::NodeType::Map)) {
    const StepKind *known = kind_of(pair.first);
    if (known == nullptr) {
      others.push_back(scalar_text(pair.first));
    } else if (kind != nullptr && kind != known) {
      reader.add_error(
          pair.first,
          std::string("found '") + known->action + "' together with '" + kind->action + "'",
          "one thing to do in a step");
    } else if (kind == nullptr) {
      kind = known;
      value.reset(pair.second);
    }
  }
  if (kind != nullptr) return kind;
  std::vector<std::string> actions;
  for (const StepKind &known : step_kinds()) actions.emplace_back(known.action);
  if (others.empty()) {
    reader.expected(node, "a step with one of " + one_of(actions));
  } else {
    reader.add_error(node, "found a step with '" + others.front() + "'",
                     "a step with one of " + one_of(actions, others.front()));
  }
  return nullptr;
}

void read_on(StepReader &reader, const YAML::Node &node, Step &step) {
  const std::string given = scalar_text(node);
  if (given != "left" && given != "right" && given != "both") {
    return reader.expected(node, "on: left, right or both");
  }
  step.on = {given != "right", given != "left"};
}

}  // namespace

Step read_step(StepReader &reader, const YAML::Node &node) {
  Step step;
  step.line = node.Mark().line + 1;
  YAML::Node value;
  const StepKind *kind = find_action(reader, node, value);
  if (kind == nullptr) return step;
  step.action = kind->action;
  step.summary = step.action + (value.IsScalar() ? " " + scalar_text(value) : "");
  std::vector<std::string> keys = {step.action, "note"};
  if (!kind->always_on_both) keys.emplace_back("on");
  const std::vector<std::string> expected = expectation_keys(step.action);
  if (!expected.empty()) keys.emplace_back("expect");
  keys.insert(keys.end(), kind->keys.begin(), kind->keys.end());
  if (node["expect"] && expected.empty()) {
    reader.add_error(node["expect"], "nothing can be expected of '" + step.action + "'");
    keys.emplace_back("expect");
  }
  reader.mapping(node, "a '" + step.action + "' step", keys);
  if (node["on"] && !kind->always_on_both) read_on(reader, node["on"], step);
  if (node["note"]) step.note = reader.text(node["note"], "a note");
  kind->read(reader, node, value, step);
  if (node["expect"] && !expected.empty()) {
    step.expected = read_expectations(reader, node["expect"], step.action);
  }
  return step;
}

}  // namespace lab
