#include "output/document.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/arrays.h"
#include "switch/values.h"

namespace lab {
namespace {

Json code_json(uint32_t code) {
  return {{"name", result_name(code)}, {"code", code}};
}

Json value_json(const Entry &entry) {
  return {{"parameter", parameter_key(entry.type)},
          {"type", entry.type},
          {"length", entry.value.size()},
          {"text", display(entry.type, entry.value)},
          {"bytes", hex(entry.value)}};
}

// What a reply is about, and on which switch.
struct Context {
  std::string scope;  // "switch", or a port
  const Settings &settings;
};

std::string name_of_port(uint32_t index, const Settings &settings) {
  const Port *port = find_port(settings, index);
  return port != nullptr ? port_name(*port) : port_text(index);
}

Json record_json(const Extracted::Record &record, const Settings &settings) {
  Json told = {{"parameter", parameter_key(record.type)}, {"type", record.type}};
  told["port"] = record.global ? Json(nullptr) : Json(name_of_port(record.port, settings));
  if (record.valid != 1) told["valid"] = false;
  return told;
}

// "switch", or a port.
std::string scope_name(const Request &request, const Settings &settings) {
  return std::visit(
      [&](const auto &asked) -> std::string {
        if constexpr (requires { asked.scope; }) {
          if (asked.scope.global) return "switch";
          return name_of_port(asked.scope.port, settings);
        }
        return "";
      },
      request.asked);
}

Json &list_of(Json &told, const char *key) {
  Json &list = told[key];
  if (!list.is_array()) list = Json::array();
  return list;
}

// --- replies ---

void tell_result(uint32_t code, Json &told) {
  if (told.contains("result") && told["result"]["code"] != 0) return;
  told["result"] = code_json(code);
  if (code == 0) told["result"]["name"] = "ok";
}

void tell(const Done &, const Context &, Json &) {}

void tell(const Result &result, const Context &, Json &told) {
  tell_result(result.code, told);
}

void tell(const Extracted &extracted, const Context &context, Json &told) {
  tell_result(extracted.result, told);
  for (const Extracted::Response &response : extracted.responses) {
    std::string text = response.accepted ? "accepted" : printable_lines(response.text);
    while (text.ends_with('\n')) text.pop_back();
    told["answer"] = text;
    told["accepted"] = response.accepted;
  }
  for (const Extracted::Record &record : extracted.records) {
    list_of(told, "records").push_back(record_json(record, context.settings));
  }
  Json &values = list_of(told, "values");
  for (const Entry &entry : extracted.values) {
    Json value = value_json(entry);
    // The same update of several ports is told once.
    if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
  }
}

void tell(const Exported &exported, const Context &, Json &told) {
  tell_result(exported.result, told);
  Json &list = told["parameters"] = Json::array();
  for (const Entry &entry : entries_of(exported.array)) list.push_back(value_json(entry));
}

void tell(const Reported &reported, const Context &context, Json &told) {
  tell_result(reported.result, told);
  Json &report = list_of(told, "report");
  for (const Reported::Record &record : reported.records) {
    report.push_back({{"scope", context.scope},
                      {"parameter", parameter_key(record.type)},
                      {"type", record.type},
                      {"component", printable(record.component)},
                      {"name", printable(record.name)},
                      {"value", printable(record.value)}});
  }
}

void tell(const Checked &, const Context &, Json &) {}

// --- scopes ---

const char *state_text(State state) {
  switch (state) {
    case State::same:
      return "same";
    case State::different:
      return "different";
    case State::same_on_twins:
      return "same on the twin VLANs";
    case State::missing_at_peer:
      return "missing at the peer";
    case State::only_at_peer:
      return "only at the peer";
    case State::not_in_mode:
      return "not compared in this mode";
    case State::not_without_twins:
      return "not compared without twin VLANs";
    case State::ignored_on_pod:
      return "ignored on pod ports";
    case State::not_without_mode:
      return "not compared without a mode";
  }
  return "";
}

// Values that differ although they read the same: say what they are made of.
void tell_apart(const Bytes &left, const Bytes &right, std::array<std::string, 2> &texts) {
  if (left == right || texts[0] != texts[1]) return;
  const auto made_of = [](const Bytes &value) {
    return value.size() == sizeof(uint32_t) ? " (" + std::to_string(word_of(value)) + ")"
                                            : " (" + std::to_string(value.size()) + " bytes)";
  };
  const bool same_size = made_of(left) == made_of(right);
  texts[0] += same_size ? " (other bytes than the peer's)" : made_of(left);
  texts[1] += same_size ? "" : made_of(right);
}

// A parameter as the left switch sees it, and the state that each switch gives it.
Json told_parameter(const View::Parameter &seen, const std::array<State, 2> &states) {
  Json told = {{"parameter", parameter_key(seen.type)}, {"type", seen.type}};
  std::array<std::string, 2> texts;
  if (seen.local) texts[0] = display(seen.type, *seen.local);
  if (seen.peer) texts[1] = display(seen.type, *seen.peer);
  if (seen.local && seen.peer) tell_apart(*seen.local, *seen.peer, texts);
  told["left"] = seen.local ? Json(texts[0]) : Json(nullptr);
  told["right"] = seen.peer ? Json(texts[1]) : Json(nullptr);
  for (std::size_t i = 0; i < states.size(); ++i) {
    told["states"][switch_names[i]] = state_text(states[i]);
  }
  if (seen.local && seen.peer && *seen.local != *seen.peer) {
    const Difference only = difference(seen.type, *seen.local, *seen.peer);
    if (!only.left.empty() || !only.right.empty()) {
      told["difference"] = {{"left", only.left}, {"right", only.right}};
    }
  }
  return told;
}

// What the peer's view says of a parameter; the same types are in both.
State peer_state(const View &peer, uint16_t type) {
  for (const View::Parameter &parameter : peer.parameters) {
    if (parameter.type == type) return parameter.state;
  }
  return State::not_without_mode;
}

// The ports of a channel that differ from the one that speaks for it, as the switch's own fault.
void add_inconsistent_ports(const View &view, const PairScope::End &end, const char *side,
                            Json &told) {
  for (const View::InconsistentPort &inconsistent : view.inconsistent) {
    Json keys = Json::array();
    for (const uint16_t type : inconsistent.types) keys.push_back(parameter_key(type));
    std::string name = port_text(inconsistent.port);
    for (const PairScope::Member &member : end.others) {
      if (member.port == inconsistent.port) name = member.name;
    }
    told["inconsistent"][side].push_back({{"port", name}, {"parameters", keys}});
  }
}

void tell_ports(const PairScope &scope, Json &told) {
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    const PairScope::End &end = scope.ends[i];
    if (!end.present) told["only"] = switch_names[1 - i];
    if (scope.kind != PairScope::Kind::of_channel) continue;
    told["ports"][switch_names[i]] = end.present ? Json(end.port_name) : Json(nullptr);
    if (end.others.empty()) continue;
    Json &members = told["members"][switch_names[i]] = {end.port_name};
    for (const PairScope::Member &member : end.others) members.push_back(member.name);
  }
}

}  // namespace

Json told_step(const Step &step, std::size_t number) {
  Json on = Json::array();
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (step.on[i]) on.push_back(switch_names[i]);
  }
  Json told = {{"step", number},
               {"line", step.line},
               {"action", step.action},
               {"on", on},
               {"summary", step.summary}};
  if (!step.note.empty()) told["note"] = step.note;
  return told;
}

void tell_reply(const Request &request, const Reply &reply, const Settings &settings, Json &told) {
  if (told.is_null()) told = Json::object();
  const Context context{scope_name(request, settings), settings};
  std::visit([&](const auto &said) { tell(said, context, told); }, reply.said);
  if (!reply.log.empty()) {
    Json &log = list_of(told, "log");
    for (const std::string &line : reply.log) log.push_back(line);
  }
}

Json told_scope(const PairScope &scope, const std::array<View, 2> &views) {
  Json told = {{"scope", scope.name}};
  if (scope.kind != PairScope::Kind::of_switch) told["pod"] = views[0].pod || views[1].pod;
  if (scope.kind != PairScope::Kind::of_switch) tell_ports(scope, told);
  for (std::size_t i = 0; i < views.size(); ++i) {
    told["verdicts"][switch_names[i]] = code_json(views[i].verdict);
  }
  Json &parameters = told["parameters"] = Json::array();
  for (const View::Parameter &seen : views[0].parameters) {
    parameters.push_back(told_parameter(seen, {seen.state, peer_state(views[1], seen.type)}));
  }
  for (std::size_t i = 0; i < views.size(); ++i) {
    add_inconsistent_ports(views[i], scope.ends[i], switch_names[i], told);
    if (told.contains("pass") || !views[i].pass) continue;
    told["pass"] = vlan_text(*views[i].pass);
    told["fail"] = vlan_text(*views[i].fail);
  }
  return told;
}

}  // namespace lab
