#include "output/check_json.h"

#include <nlohmann/json.hpp>

#include "output/fix.h"
#include "output/patch_json.h"
#include "output/words.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

Json text_or_null(const std::optional<std::string> &text) {
  return text ? Json(*text) : Json();
}

Json fix_to_json(const FixReport &fix, const SideNames &names) {
  Json json = Json::object();
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (fix.alone[side]) json[switch_names[side]] = patch_to_json(*fix.alone[side]);
  }
  for (std::size_t side = 0; fix.both && side < switch_names.size(); ++side) {
    json["both"][switch_names[side]] = patch_to_json((*fix.both)[side]);
  }
  json["text"] = describe_fix(fix.fix, names);
  return json;
}

Json parameter_to_json(const ParameterReport &parameter, const SideNames &names) {
  Json json = {{"parameter", parameter_key(parameter.type)}, {"type", parameter.type}};
  const auto texts = find_value_texts(parameter);
  for (std::size_t side = 0; side < texts.size(); ++side) {
    json[switch_names[side]] = text_or_null(texts[side]);
  }
  for (std::size_t side = 0; side < parameter.states.size(); ++side) {
    json["states"][switch_names[side]] = state_name(parameter.states[side]);
  }
  if (parameter.values[0] && parameter.values[1] && parameter.values[0] != parameter.values[1]) {
    const Difference only = difference(parameter.type, *parameter.values[0], *parameter.values[1]);
    if (!only.left.empty() || !only.right.empty()) {
      json["difference"] = {{"left", only.left}, {"right", only.right}};
    }
  }
  for (std::size_t side = 0; parameter.digests && side < switch_names.size(); ++side) {
    json["digest"][switch_names[side]] = text_or_null((*parameter.digests)[side]);
  }
  if (parameter.fix) json["fix"] = fix_to_json(*parameter.fix, names);
  if (parameter.accepted) json["accepted"] = acceptance_to_json(*parameter.accepted);
  return json;
}

void add_ports(const PairScope &scope, Json &json) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const PairScope::End &end = scope.ends[side];
    if (!end.present) json["only"] = switch_names[1 - side];
    if (scope.kind != PairScope::Kind::of_channel) continue;
    json["ports"][switch_names[side]] = end.present ? Json(end.port_name) : Json();
    if (end.others.empty()) continue;
    Json &members = json["members"][switch_names[side]] = {end.port_name};
    for (const PairScope::Member &member : end.others) members.push_back(member.name);
  }
}

Json inconsistent_to_json(const std::vector<InconsistentPort> &ports) {
  Json json = Json::array();
  for (const InconsistentPort &port : ports) {
    Json keys = Json::array();
    for (const uint16_t type : port.types) keys.push_back(parameter_key(type));
    json.push_back({{"port", port.name}, {"parameters", std::move(keys)}});
  }
  return json;
}

Json scope_to_json(const ScopeReport &report, const SideNames &names) {
  Json json = {{"scope", report.scope.name}};
  if (report.scope.kind != PairScope::Kind::of_switch) {
    json["pod"] = report.on_pod;
    add_ports(report.scope, json);
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    json["verdicts"][switch_names[side]] = code_to_json(report.codes[side], "agree");
  }
  Json &parameters = json["parameters"] = Json::array();
  for (const ParameterReport &parameter : report.parameters) {
    parameters.push_back(parameter_to_json(parameter, names));
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (report.inconsistent[side].empty()) continue;
    json["inconsistent"][switch_names[side]] = inconsistent_to_json(report.inconsistent[side]);
  }
  if (report.pass) json["pass"] = vlan_text(*report.pass);
  if (report.fail) json["fail"] = vlan_text(*report.fail);
  if (report.accepted) json["accepted"] = acceptance_to_json(*report.accepted);
  return json;
}

}  // namespace

Json code_to_json(uint32_t code, const char *success) {
  return {{"name", code == 0 ? success : result_name(code)}, {"code", code}};
}

Json acceptance_to_json(const Acceptance &acceptance) {
  return {{"reason", acceptance.reason},
          {"until", acceptance.until.empty() ? Json() : Json(acceptance.until)}};
}

Json checks_to_json(const std::vector<ScopeReport> &checks, const SideNames &names) {
  Json json = Json::array();
  for (const ScopeReport &scope : checks) json.push_back(scope_to_json(scope, names));
  return json;
}

}  // namespace lab
