#include "scenario/scenario.h"

#include "scenario/steps.h"
#include "switch/state_file.h"
#include "text/file.h"

namespace lab {
namespace {

void read_switches(StepReader &reader, const YAML::Node &node, const ReadFrom &read_from,
                   Scenario &scenario) {
  if (!node || node.IsNull()) return;
  if (!reader.mapping(node, "switches", {switch_names.begin(), switch_names.end()})) return;
  const std::string folder = scenario.path.substr(0, scenario.path.rfind('/') + 1);
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    scenario.settings[i] = read_switch(reader, node[switch_names[i]], i, folder, read_from);
  }
}

// Returns the twin VLANs of a scenario without 'twin-vlans', if any of its channels carries VLANs.
std::optional<Vlans> carried_twins(const SettingsPair &settings) {
  for (const Settings &side : settings) {
    for (const Channel &channel : side.channels) {
      if (channel.vlans.any()) return twin_vlans({&settings[0], &settings[1]});
    }
  }
  return std::nullopt;
}

void read_root(StepReader &reader, const YAML::Node &root, const ReadFrom &read_from,
               Scenario &scenario) {
  const std::vector<std::string> keys = {"title", "about", "twin-vlans", "switches", "steps"};
  if (!reader.mapping(root, "a scenario", keys)) return;
  if (root["title"]) scenario.title = reader.text(root["title"], "a title");
  if (root["about"]) scenario.about = reader.text(root["about"], "a text");
  read_switches(reader, root["switches"], read_from, scenario);
  scenario.twins = root["twin-vlans"] ? read_vlan_list(reader, root["twin-vlans"], "twin-vlans")
                                      : carried_twins(scenario.settings);
  const YAML::Node steps = root["steps"];
  if (!reader.required(root, "steps", "a scenario")) return;
  if (!steps.IsSequence() || steps.size() == 0) {
    return reader.add_error(steps, "found no step", "a list of at least one step");
  }
  reader.now = scenario.settings;
  reader.scopes = find_scopes({&reader.now[0], &reader.now[1]});
  reader.twins = scenario.twins;
  for (const auto &node : steps) {
    scenario.steps.push_back(read_step(reader, node));
    scenario.steps.back().number = scenario.steps.size();
  }
}

}  // namespace

ReadScenario read_scenario(const std::string &path, const ReadFrom &read_from) {
  ReadScenario read;
  const std::string text = read_file(path, read.errors);
  if (read.errors.empty()) return read_scenario_text(path, text, read_from);
  read.scenario.path = printable(path);
  return read;
}

ReadScenario read_scenario_text(const std::string &path, const std::string &text,
                                const ReadFrom &read_from) {
  ReadScenario read;
  read.scenario.path = printable(path);
  StepReader reader;
  read_yaml(text, "a scenario", reader,
            [&](const YAML::Node &root) { read_root(reader, root, read_from, read.scenario); });
  read.errors = std::move(reader.errors);
  sort_errors(read.errors);
  return read;
}

bool changes_settings(const Step &step) {
  return step.action == "command" || step.action == "update";
}

}  // namespace lab
