#include "output/json.h"
#include "switch/arrays.h"
#include "switch/values.h"

namespace lab {
namespace {

Json head_to_json(const StepHead &head) {
  std::vector<std::string> on;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (head.on[side]) on.emplace_back(switch_names[side]);
  }
  Json json = {{"step", head.number},
               {"line", head.line},
               {"action", head.action},
               {"on", on},
               {"summary", head.summary}};
  if (!head.note.empty()) json["note"] = head.note;
  return json;
}

Json record_to_json(const ParameterRecord &record) {
  Json json = {{"parameter", parameter_key(record.type)},
               {"type", record.type},
               {"port", record.port.empty() ? Json() : Json(record.port)}};
  if (!record.is_valid) json["valid"] = false;
  return json;
}

Json entry_to_json(const Entry &entry) {
  return {{"parameter", parameter_key(entry.type)},
          {"type", entry.type},
          {"length", entry.value.size()},
          {"text", display(entry.type, entry.value)},
          {"bytes", hex(entry.value)}};
}

Json display_to_json(const DisplayRecord &record) {
  return {{"scope", record.scope}, {"parameter", parameter_key(record.type)},
          {"type", record.type},   {"component", record.component},
          {"name", record.name},   {"value", record.value}};
}

Json switch_to_json(const SwitchReport &report) {
  Json json = Json::object();
  if (report.result) json["result"] = code_to_json(*report.result, "ok");
  if (report.is_command) json["answer"] = describe_answer(report);
  if (report.answer) json["accepted"] = report.answer->is_accepted;
  if (report.records) json["records"] = list_json(*report.records, record_to_json);
  if (report.values) json["values"] = list_json(*report.values, entry_to_json);
  if (report.exported) json["parameters"] = list_json(entries_of(*report.exported), entry_to_json);
  if (report.display) json["report"] = list_json(*report.display, display_to_json);
  if (!report.log.empty()) json["log"] = report.log;
  return json;
}

struct FindingToJson {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(const ResultCode &result) const {
    return result.code == 0 ? "ok" : result_name(result.code);
  }
  Json operator()(const CheckCode &result) const { return result_name(result.code); }
  Json operator()(const std::string &text) const { return text; }
  Json operator()(const Vlans &vlans) const { return vlan_text(vlans); }
  Json operator()(const std::vector<uint16_t> &types) const { return list_keys(types); }
  Json operator()(const std::vector<ParameterRecord> &records) const {
    return list_json(records, describe_record);
  }
  Json operator()(const TextsByType &texts) const {
    Json json = Json::object();
    for (const auto &[type, text] : texts) json[parameter_key(type)] = json_or_null(text);
    return json;
  }
};

Json expectation_to_json(const ExpectationReport &expectation) {
  return {{"what", describe_subject(expectation)},
          {"expected", std::visit(FindingToJson{}, expectation.expected)},
          {"found", std::visit(FindingToJson{}, expectation.found)},
          {"met", expectation.is_met}};
}

Json what_if_to_json(const WhatIfReport &report) {
  Json json = head_to_json(report.head);
  for (std::size_t side = 0; side < report.sides.size(); ++side) {
    if (!report.sides[side]) continue;
    const WhatIfSide &tried = *report.sides[side];
    Json &of_side = json["switches"][switch_names[side]] = switch_to_json(tried.answer);
    of_side["looked-at"] = tried.checked;
    of_side["now"] = checks_to_json(tried.now);
    of_side["then"] = checks_to_json(tried.then);
  }
  return json;
}

Json failure_to_json(const RunFailure &failure) {
  Json json = {{"problem", failure.problem}};
  if (failure.step) {
    json["step"] = failure.step->number;
    json["line"] = failure.step->line;
    json["summary"] = failure.step->summary;
  }
  return json;
}

Json step_to_json(const StepReport &step) {
  Json json = head_to_json(step.head);
  if (step.checks) json["checks"] = checks_to_json(*step.checks);
  if (!step.checks) json["switches"] = Json::object();
  for (std::size_t side = 0; side < step.switches.size(); ++side) {
    if (!step.switches[side]) continue;
    json["switches"][switch_names[side]] = switch_to_json(*step.switches[side]);
  }
  if (!step.expectations.empty()) {
    json["expectations"] = list_json(step.expectations, expectation_to_json);
  }
  return json;
}

}  // namespace

std::string describe_finding(const Finding &finding) {
  const Json json = std::visit(FindingToJson{}, finding);
  std::vector<std::string> texts;
  for (const auto &[key, value] : json.items()) {
    const bool is_empty = value.is_null() || value == "";
    texts.push_back((json.is_object() ? key + ": " : "") +
                    (is_empty ? "nothing" : value.get<std::string>()));
  }
  return texts.empty() ? "nothing" : join(texts);
}

std::string format_run(const RunReport &report, const std::vector<StepReport> &steps) {
  Json json = {{"version", 1},
               {"scenario", report.path},
               {"title", report.title},
               {"about", report.about},
               {"agree", json_or_null(report.agree)},
               {"steps", list_json(steps, step_to_json)}};
  if (report.what_if) json["what_if"] = what_if_to_json(*report.what_if);
  if (report.failure) json["failed"] = failure_to_json(*report.failure);
  json["met"] = is_as_expected(report);
  return format_json(json, JsonForm::indented);
}

}  // namespace lab
