// Scenarios. They are read, but not run.

#include "scenario/scenario.h"
#include "tasks/side.h"
#include "texts.h"

namespace {

// Returns whether all sources are files of the captures, not a terminal or a database.
bool has_only_captures(const std::string &text) {
  try {
    const YAML::Node root = YAML::Load(text);
    if (!root.IsMap()) return true;
    const YAML::Node switches = root["switches"];
    if (!switches || !switches.IsMap()) return true;
    for (const auto &side : switches) {
      if (!side.second.IsMap() || !side.second["from"]) continue;
      const YAML::Node from = side.second["from"];
      if (!from.IsScalar() || from.Scalar() == "-" ||
          from.Scalar().find('/') != std::string::npos) {
        return false;
      }
    }
  } catch (const YAML::Exception &) {
  }
  return true;
}

}  // namespace

void check_text(std::string_view input) {
  const std::string text(input);
  if (!has_only_captures(text)) return;
  const lab::ReadScenario read =
      lab::read_scenario_text(CAPTURES "scenario.yaml", text, lab::read_source_settings);
  check_errors_with_lines(read.errors, text);
  if (!read.errors.empty()) return;
  for (const lab::Settings &settings : read.scenario.settings) write_and_read(settings);
  must(!read.scenario.steps.empty(), "a scenario has a step");
  for (const lab::Step &step : read.scenario.steps) {
    must(step.line > 0 && !step.action.empty() && (step.on[0] || step.on[1]),
         "a step has a line, an action and a side");
    must(lab::printable(step.summary) == step.summary, "a summary is printable");
    for (std::size_t i = 0; i < step.requests.size(); ++i) {
      must(step.on[i] || step.requests[i].empty(), "a step has requests only for its sides");
    }
  }
}
