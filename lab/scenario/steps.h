// The steps of scenarios, a row each: the keys that it takes, what can be expected of it, how it is
// read and what it asks of the switches.
#pragma once

#include <set>
#include <string>

#include "scenario/scenario.h"
#include "text/yaml.h"

namespace lab {

// Where the reading of a scenario has come to.
struct StepReader : Reader {
  SettingsPair now;               // the switches, as the steps so far leave them
  std::set<std::string> saved;    // names of exported arrays
  std::vector<PairScope> scopes;  // all, of these switches
  std::optional<Vlans> twins;     // of the scenario
};

Step read_step(StepReader &reader, const YAML::Node &node);

// Ask a switch, if the step is on it.
void add_operation(Step &step, std::size_t side, Operation operation);

// The step `command`, whose attributes are rows of their own.
void read_command(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step);
std::vector<std::string> command_step_keys();

// The keys of what can be expected of a step.
std::vector<std::string> expectation_keys(const std::string &action);
std::vector<Expected> read_expectations(StepReader &reader, const YAML::Node &node,
                                        const std::string &action);

// --- what steps and expectations name ---

// Before the number or the name of a channel.
inline constexpr std::string_view channel_word = "channel ";

// The index of a port on each side; nothing: that side has no port of its name.
using PortOfPair = std::array<std::optional<uint32_t>, 2>;

// Ports by ranges of indexes or by names, each of which one of the switches has at least.
std::vector<PortOfPair> read_ports(StepReader &reader, const YAML::Node &node,
                                   const std::string &what);

// What a check makes of them.
PairScope scope_of(const PortOfPair &port, const SettingsPair &now);

// A channel, by its number or its name, that one of the switches has; its name.
std::string read_channel_name(StepReader &reader, const YAML::Node &node, const std::string &given);

// [stp-mode, ifi-port-type@0x1000]
std::vector<ParameterRecord> read_records(StepReader &reader, const YAML::Node &node);

}  // namespace lab
