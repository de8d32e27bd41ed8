#include "output/run.h"

#include <nlohmann/json.hpp>

#include "output/check_json.h"
#include "output/error_json.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

Json head_to_json(const StepHead &head) {
  Json on = Json::array();
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (head.on[side]) on.push_back(switch_names[side]);
  }
  Json json = {{"step", head.number},
               {"line", head.line},
               {"action", head.action},
               {"on", on},
               {"summary", head.summary}};
  if (!head.note.empty()) json["note"] = head.note;
  return json;
}

Json records_to_json(const std::vector<ParameterRecord> &records) {
  Json json = Json::array();
  for (const ParameterRecord &record : records) {
    json.push_back({{"parameter", parameter_key(record.type)}, {"type", record.type}});
    json.back()["port"] = record.port.empty() ? Json() : Json(record.port);
    if (!record.is_valid) json.back()["valid"] = false;
  }
  return json;
}

Json values_to_json(const std::vector<Entry> &entries) {
  Json json = Json::array();
  for (const Entry &entry : entries) {
    json.push_back({{"parameter", parameter_key(entry.type)},
                    {"type", entry.type},
                    {"length", entry.value.size()},
                    {"text", display(entry.type, entry.value)},
                    {"bytes", hex(entry.value)}});
  }
  return json;
}

Json display_to_json(const std::vector<DisplayRecord> &records) {
  Json json = Json::array();
  for (const DisplayRecord &record : records) {
    json.push_back({{"scope", record.scope},
                    {"parameter", parameter_key(record.type)},
                    {"type", record.type},
                    {"component", record.component},
                    {"name", record.name},
                    {"value", record.value}});
  }
  return json;
}

Json switch_to_json(const SwitchReport &report) {
  Json json = Json::object();
  if (report.result) json["result"] = code_to_json(*report.result, "ok");
  if (report.is_command) json["answer"] = describe_answer(report);
  if (report.answer) json["accepted"] = report.answer->is_accepted;
  if (report.records) json["records"] = records_to_json(*report.records);
  if (report.values) json["values"] = values_to_json(*report.values);
  if (report.parameters) json["parameters"] = values_to_json(*report.parameters);
  if (report.display) json["report"] = display_to_json(*report.display);
  if (!report.log.empty()) json["log"] = report.log;
  return json;
}

// --- expectations ---

Json finding_to_json(const Finding &finding) {
  return std::visit(
      [](const auto &found) -> Json {
        using Found = std::decay_t<decltype(found)>;
        if constexpr (std::is_same_v<Found, std::monostate>) {
          return nullptr;
        } else if constexpr (std::is_same_v<Found, TextsByType>) {
          Json json = Json::object();
          for (const auto &[type, text] : found) {
            json[parameter_key(type)] = text ? Json(*text) : Json();
          }
          return json;
        } else {
          return describe_found(found);
        }
      },
      finding);
}

Json expectations_to_json(const std::vector<ExpectationReport> &expectations) {
  Json json = Json::array();
  for (const ExpectationReport &expectation : expectations) {
    json.push_back({{"what", describe_subject(expectation)},
                    {"expected", finding_to_json(expectation.expected)},
                    {"found", finding_to_json(expectation.found)},
                    {"met", expectation.is_met}});
  }
  return json;
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
  if (!step.expectations.empty()) json["expectations"] = expectations_to_json(step.expectations);
  return json;
}

}  // namespace

std::string format_run(const RunReport &report, const std::vector<StepReport> &steps) {
  Json list = Json::array();
  for (const StepReport &step : steps) list.push_back(step_to_json(step));
  Json json = {{"version", 1},
               {"scenario", report.path},
               {"title", report.title},
               {"about", report.about},
               {"agree", report.agree ? Json(*report.agree) : Json()},
               {"steps", std::move(list)}};
  if (report.what_if) json["what_if"] = what_if_to_json(*report.what_if);
  if (report.failure) json["failed"] = failure_to_json(*report.failure);
  json["met"] = is_as_expected(report);
  return format_json(json, JsonForm::indented);
}

}  // namespace lab
