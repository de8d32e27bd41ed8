// Scenarios: their steps, or their errors. None is carried out.

#include "scenario/scenario.h"
#include "tasks/side.h"
#include "texts.h"

namespace {

// Other files are read from the captures only: nothing is asked of the network or of a terminal.
bool stays_here(const std::string &text) {
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
  if (!stays_here(text)) return;
  const lab::ReadScenario read =
      lab::read_scenario_text(CAPTURES "scenario.yaml", text, lab::settings_from);
  check_errors_with_lines(read.errors, text);
  if (!read.errors.empty()) return;
  for (const lab::Settings &settings : read.scenario.settings) write_and_read(settings);
  must(!read.scenario.steps.empty(), "a scenario has steps");
  for (const lab::Step &step : read.scenario.steps) {
    must(step.line > 0 && !step.action.empty() && (step.on[0] || step.on[1]),
         "a step asks something of a switch");
    must(lab::printable(step.summary) == step.summary, "a step can be shown");
    for (std::size_t i = 0; i < step.requests.size(); ++i) {
      must(step.on[i] || step.requests[i].empty(), "a switch is asked only if the step is on it");
    }
  }
}
