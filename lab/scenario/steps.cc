#include "scenario/steps.h"

#include <algorithm>
#include <csignal>

#include "standin.h"
#include "switch/state_file.h"

namespace lab {
namespace {

const Words operation_words = {
    {"allocation", STANDIN_ALLOC},     {"tlv-add", STANDIN_TLV_ADD},
    {"tlv-read", STANDIN_TLV_NEXT},    {"tlv-find", STANDIN_TLV_FIND},
    {"history", STANDIN_HISTORY_INIT}, {"membership", STANDIN_MEMBERSHIP}};
const Words signal_words = {
    {"ABRT", SIGABRT}, {"SEGV", SIGSEGV}, {"KILL", SIGKILL}, {"BUS", SIGBUS}};

// --- operations ---

// On both switches.
template <class Op>
void add_to_both(Step &step, const Op &operation) {
  for (const std::size_t side : {0U, 1U}) add_operation(step, side, operation);
}

// One for each port.
template <class Op>
void add_to_ports(Step &step, const std::vector<PortOfPair> &ports, Op operation) {
  for (const PortOfPair &port : ports) {
    for (std::size_t side = 0; side < port.size(); ++side) {
      if (!port[side]) continue;
      operation.scope = {false, *port[side]};
      add_operation(step, side, operation);
    }
  }
}

// For the ports under the key 'port', or for the switch if there is no such key.
template <class Op>
void add_to_port_key(StepReader &reader, const YAML::Node &node, Step &step, Op operation) {
  if (!node["port"]) return add_to_both(step, operation);
  add_to_ports(step, read_ports(reader, node["port"], "port"), std::move(operation));
}

std::string of_port(const YAML::Node &node) {
  return node["port"] ? " of port " + scalar_text(node["port"]) : "";
}

// --- the steps ---

template <class Op>
void read_update(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Op update;
  update.entries = read_parameters(reader, value, step.action);
  std::vector<std::string> keys;
  for (const Entry &entry : update.entries) keys.push_back(parameter_key(entry.type));
  step.summary = step.action + of_port(node) + ":" + (keys.empty() ? "" : " ") + join(keys);
  add_to_port_key(reader, node, step, std::move(update));
}

// Reads a value that is "switch", or ports.
template <class Op>
void read_scopes(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  const std::string what = "what to " + step.action;
  if (scalar_text(value) == "switch") return add_to_both(step, Op{});
  add_to_ports(step, read_ports(reader, value, what + " (switch, or ports)"), Op{});
}

void read_export(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  if (node["as"]) {
    step.saved_as = reader.text(node["as"], "a name for the array");
    reader.saved.insert(step.saved_as);
  }
  read_scopes<Export>(reader, node, value, step);
  if (std::max(step.requests[0].size(), step.requests[1].size()) > 1)
    reader.expected(value, "the switch or one port");
}

void read_rebuild(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  step.rebuilt_from = reader.text(value, "the name of an exported array");
  if (!reader.saved.contains(step.rebuilt_from)) {
    const std::set<std::string> &names = reader.saved;
    reader.expected(
        value, names.empty() ? "an exported array, but no earlier step has exported one 'as' a name"
                             : "an array that an earlier step has exported: " +
                                   one_of({names.begin(), names.end()}, step.rebuilt_from));
  }
  step.summary = "rebuild" + of_port(node) + " from " + step.rebuilt_from;
  add_to_port_key(reader, node, step, Rebuild{});
}

void read_check(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Check check;
  const std::string given = scalar_text(value);
  const std::string what = "what to check: all, switch, channel and its number or name, or ports";
  const bool is_of_channel = given.starts_with(channel_word);
  if (given == "switch") {
    check.scopes = {PairScope{}};
  } else if (given == "all" || is_of_channel) {
    check.scopes = reader.scopes;
  } else {
    for (const PortOfPair &port : read_ports(reader, value, what)) {
      check.scopes.push_back(scope_of(port, reader.now));
    }
  }
  if (is_of_channel) {
    const std::string name = read_channel_name(reader, value, given.substr(channel_word.size()));
    std::erase_if(check.scopes, [&](const PairScope &scope) {
      return scope.kind != PairScope::Kind::of_channel || scope.name != name;
    });
  }
  check.twins =
      node["twin-vlans"] ? read_vlan_list(reader, node["twin-vlans"], "twin-vlans") : reader.twins;
  step.check = std::move(check);
}

void read_change_step(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  for (std::size_t side = 0; side < step.on.size(); ++side) {
    // An error on both sides is reported once.
    if (!step.on[side] || !reader.mapping(value, "a change", platform_keys)) continue;
    read_platform(reader, value, reader.now[side], true);
    add_operation(step, side, ChangePlatform{reader.now[side]});
  }
  reader.scopes = find_scopes({&reader.now[0], &reader.now[1]});
  step.summary = "change";
  for (const auto &pair : value.IsMap() ? value : YAML::Node(YAML::NodeType::Map)) {
    step.summary += " " + scalar_text(pair.first);
  }
}

void read_fail(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step) {
  Fail fail{reader.word(value, "an operation", operation_words, false), 1, 1};
  if (node["nth"]) fail.nth = reader.number(node["nth"], "nth", 1);
  if (node["times"]) fail.times = reader.number(node["times"], "times");
  step.summary = "fail " + scalar_text(value) + " " + std::to_string(fail.nth);
  add_to_both(step, fail);
}

void read_crash(StepReader &reader, const YAML::Node &, const YAML::Node &value, Step &step) {
  add_to_both(step, Crash{int32_t(reader.word(value, "a signal", signal_words, false))});
}

// --- kinds of steps ---

struct StepKind {
  std::string action;
  std::vector<std::string> keys;  // in addition to the action's own, "on", "note" and "expect"
  void (*read)(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step);
  bool always_on_both = false;
};

const std::vector<StepKind> &step_kinds() {
  static const std::vector<StepKind> kinds = {
      {"command", command_step_keys(), read_command},
      {"update", {"port"}, read_update<Update>},
      {"cache-update", {"port"}, read_update<CacheUpdate>},
      {"delete", {}, read_scopes<Delete>},
      {"export", {"as"}, read_export},
      {"rebuild", {"port"}, read_rebuild},
      {"check", {"twin-vlans"}, read_check, true},
      {"report", {}, read_scopes<Report>},
      {"change", {}, read_change_step},
      {"fail", {"nth", "times"}, read_fail},
      {"crash", {}, read_crash},
  };
  return kinds;
}

// Returns the kind of a step and sets `value` to the value of its action; nullptr after an error.
const StepKind *find_action(StepReader &reader, const YAML::Node &node, YAML::Node &value) {
  const StepKind *kind = nullptr;
  for (const auto &pair : node.IsMap() ? node : YAML::Node(YAML::NodeType::Map)) {
    const std::string key = scalar_text(pair.first);
    const StepKind *known =
        find_in(step_kinds(), [&](const StepKind &one) { return one.action == key; });
    if (known == nullptr) continue;
    if (kind == nullptr) {
      kind = known;
      value.reset(pair.second);
    } else if (kind != known) {
      reader.add_error(pair.first,
                       "found '" + known->action + "' together with '" + kind->action + "'",
                       "one action in a step");
    }
  }
  if (kind != nullptr) return kind;
  const std::vector<std::string> actions =
      describe_each(step_kinds(), [](const StepKind &known) { return known.action; });
  if (!node.IsMap() || node.size() == 0) {
    reader.expected(node, "a step with one of " + one_of(actions));
  } else {
    const std::string key = scalar_text(node.begin()->first);
    reader.add_error(node, "found a step with '" + key + "'",
                     "a step with one of " + one_of(actions, key));
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

void add_operation(Step &step, std::size_t side, Operation operation) {
  if (step.on[side]) step.requests[side].push_back(std::move(operation));
}

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
  const bool is_expected = node["expect"].IsDefined();
  const bool can_expect = !expectation_keys(step.action).empty();
  if (can_expect || is_expected) keys.emplace_back("expect");
  keys.insert(keys.end(), kind->keys.begin(), kind->keys.end());
  if (is_expected && !can_expect) {
    reader.add_error(node["expect"], "nothing can be expected of '" + step.action + "'");
  }
  reader.mapping(node, "a '" + step.action + "' step", keys);
  if (node["on"] && !kind->always_on_both) read_on(reader, node["on"], step);
  if (node["note"]) step.note = reader.text(node["note"], "a note");
  kind->read(reader, node, value, step);
  if (is_expected && can_expect) {
    step.expected = read_expectations(reader, node["expect"], step.action);
  }
  return step;
}

}  // namespace lab
