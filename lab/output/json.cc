#include "output/json.h"

#include <string_view>

#include "switch/values.h"

namespace lab {
namespace {

Json error_to_json(const std::string &source, const InputError &error) {
  Json json = {{"source", source}, {"where", place_of(error)}};
  if (error.line > 0) {
    json["line"] = error.line;
    json["column"] = error.column;
  }
  // Only the text form of an error begins with the verb.
  constexpr std::string_view found_verb = "found ";
  const bool has_verb = error.found.starts_with(found_verb);
  json["found"] = error.found.substr(has_verb ? found_verb.size() : 0);
  json["expected"] = error.expected;
  return json;
}

// --- patches ---

Json patch_value_to_json(const FieldValue &value) {
  return std::visit([](const auto &texts) { return Json(texts); }, value);
}

// Rows and tables. emplace_back() skips the look-up of keys, which are unique here.
template <class Value>
Json patch_value_to_json(const std::map<std::string, Value> &members) {
  Json::object_t object;
  for (const auto &[name, value] : members) object.emplace_back(name, patch_value_to_json(value));
  return object;
}

Json operation_to_json(const PatchOperation &operation) {
  constexpr const char *op_names[] = {"add", "remove", "replace"};
  Json::json_pointer pointer;
  for (const std::string &name : operation.path) pointer.push_back(name);
  Json json = {{"op", op_names[std::size_t(operation.op)]}, {"path", pointer.to_string()}};
  std::visit(
      [&](const auto &value) {
        if constexpr (requires { patch_value_to_json(value); })
          json["value"] = patch_value_to_json(value);
      },
      operation.value);
  return json;
}

// --- checks ---

Json fix_to_json(const FixReport &fix, const SideNames &names) {
  Json json = Json::object();
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (fix.alone[side]) json[switch_names[side]] = patch_to_json(*fix.alone[side]);
  }
  if (fix.both) {
    json["both"] = sides_json([&](auto side) { return patch_to_json((*fix.both)[side]); });
  }
  json["text"] = describe_fix(fix.fix, names);
  return json;
}

Json acceptance_to_json(const Acceptance &acceptance) {
  return {{"reason", acceptance.reason},
          {"until", acceptance.until.empty() ? Json() : Json(acceptance.until)}};
}

Json parameter_to_json(const ParameterReport &parameter, const SideNames &names) {
  Json json = {{"parameter", parameter_key(parameter.type)}, {"type", parameter.type}};
  const auto texts = find_value_texts(parameter);
  json.update(sides_json([&](auto side) { return json_or_null(texts[side]); }));
  json["states"] = sides_json([&](auto side) { return state_name(parameter.states[side]); });
  const Difference only = find_difference(parameter);
  if (!only.left.empty() || !only.right.empty()) {
    json["difference"] = {{"left", only.left}, {"right", only.right}};
  }
  if (const auto &digests = parameter.digests) {
    json["digest"] = sides_json([&](auto side) { return json_or_null((*digests)[side]); });
  }
  if (parameter.fix) json["fix"] = fix_to_json(*parameter.fix, names);
  if (parameter.accepted) json["accepted"] = acceptance_to_json(*parameter.accepted);
  return json;
}

void add_scope_ports(const PairScope &scope, Json &json) {
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

Json scope_to_json(const ScopeReport &report, const SideNames &names) {
  Json json = {{"scope", report.scope.name}};
  if (report.scope.kind != PairScope::Kind::of_switch) {
    json["pod"] = report.on_pod;
    add_scope_ports(report.scope, json);
  }
  json["verdicts"] =
      sides_json([&](auto side) { return code_to_json(report.codes[side], "agree"); });
  json["parameters"] = list_json(report.parameters, [&](const ParameterReport &parameter) {
    return parameter_to_json(parameter, names);
  });
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (report.inconsistent[side].empty()) continue;
    json["inconsistent"][switch_names[side]] =
        list_json(report.inconsistent[side], [](const InconsistentPort &port) -> Json {
          return {{"port", port.name}, {"parameters", list_keys(port.types)}};
        });
  }
  if (report.pass) json["pass"] = vlan_text(*report.pass);
  if (report.fail) json["fail"] = vlan_text(*report.fail);
  if (report.accepted) json["accepted"] = acceptance_to_json(*report.accepted);
  return json;
}

}  // namespace

std::string format_json(const Json &json, JsonForm form) {
  const int indent = form == JsonForm::indented ? 2 : -1;
  return json.dump(indent, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json errors_to_json(const std::vector<SourceErrors> &sources) {
  Json list = Json::array();
  for (const SourceErrors &source : sources) {
    for (const InputError &error : source.errors) {
      list.push_back(error_to_json(source.source, error));
    }
  }
  return list;
}

Json patch_to_json(const Patch &patch) {
  return list_json(patch, operation_to_json);
}

Json code_to_json(uint32_t code, const char *success) {
  return {{"name", code == 0 ? success : result_name(code)}, {"code", code}};
}

Json checks_to_json(const std::vector<ScopeReport> &checks, const SideNames &names) {
  return list_json(checks, [&](const ScopeReport &scope) { return scope_to_json(scope, names); });
}

Json notes_to_json(const std::vector<Note> &notes, const SideNames &names) {
  return list_json(notes, [&](const Note &note) {
    Json json = {{"kind", note_keys()[std::size_t(note.kind)]},
                 {"severity", severity_name(note.kind)},
                 {"scope", note.channel.empty() ? PairScope{}.name : printable(note.channel)},
                 {"text", describe_note(note, names)}};
    if (note.accepted) json["accepted"] = acceptance_to_json(*note.accepted);
    return json;
  });
}

Json comparison_to_json(const PairReport &report) {
  const Outcome outcome = find_outcome(report);
  const SideNames &names = side_names(report);
  Json json = {{"version", 1},
               {"verdict", outcome_name(outcome)},
               {"agree", outcome == Outcome::agree},
               {"incomplete", list_json(report.incomplete, [](const IncompleteReport &each) {
                  return describe_incomplete(each.reason);
                })}};
  if (report.is_intended) json["intended"] = true;
  json.update(sides_json([&](auto side) -> Json {
    const SideReport &of_side = report.sides[side];
    return {{"source", of_side.source},
            {"name", of_side.name},
            {"spanning-tree", spanning_tree_name(of_side.spanning_tree)}};
  }));
  json["twin-vlans"] = vlan_text(report.twin_vlans);
  json["checks"] = checks_to_json(report.checks, names);
  json["notes"] = notes_to_json(report.notes, names);
  return json;
}

std::string format_errors(const std::vector<SourceErrors> &sources, JsonForm form) {
  return format_json({{"version", 1}, {"errors", errors_to_json(sources)}}, form);
}

std::string format_scenario_errors(const std::string &path, const InputErrors &errors) {
  return format_json(
      {{"version", 1}, {"scenario", path}, {"errors", errors_to_json({{path, errors}})}},
      JsonForm::indented);
}

std::string format_comparison(const PairReport &report) {
  return format_json(comparison_to_json(report), JsonForm::indented);
}

std::string format_pair_result(const PairResult &result) {
  Json json = {{"pair", result.name}, {"version", 1}};
  if (result.errors.empty()) {
    json.update(comparison_to_json(result.report));
  } else {
    json["errors"] = errors_to_json(result.errors);
  }
  return format_json(json, JsonForm::line);
}

std::string format_patch(const Patch &patch) {
  return format_json(patch_to_json(patch), JsonForm::indented);
}

std::string format_patches(const std::array<Patch, 2> &patches) {
  return format_json(sides_json([&](auto side) { return patch_to_json(patches[side]); }),
                     JsonForm::indented);
}

}  // namespace lab
