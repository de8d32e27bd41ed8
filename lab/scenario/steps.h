// Reading the steps of scenarios.
#pragma once

#include <set>
#include <string>

#include "scenario/scenario.h"
#include "text/yaml.h"

namespace lab {

// A reader with the state after the steps that were read so far.
struct StepReader : Reader {
  SettingsPair now;               // the current settings
  std::set<std::string> saved;    // the names of exported arrays
  std::vector<PairScope> scopes;  // all scopes of the current settings
  std::optional<Vlans> twins;     // the twin VLANs of the scenario
};

Step read_step(StepReader &reader, const YAML::Node &node);

// Adds an operation to the request of a side, unless the step is on the other side only.
void add_operation(Step &step, std::size_t side, Operation operation);

// Reads the step `command`.
void read_command(StepReader &reader, const YAML::Node &node, const YAML::Node &value, Step &step);
std::vector<std::string> command_step_keys();

// Returns the keys of the expectations that an action may have.
std::vector<std::string> expectation_keys(const std::string &action);
std::vector<Expected> read_expectations(StepReader &reader, const YAML::Node &node,
                                        const std::string &action);

// --- ports, channels and records in steps and expectations ---

// The prefix of the number or the name of a channel.
inline constexpr std::string_view channel_word = "channel ";

// The index of a port on each side; nullopt if the side does not have the port.
using PortOfPair = std::array<std::optional<uint32_t>, 2>;

// Reads ranges of port indexes, or names of ports. Each port must exist on at least one side.
std::vector<PortOfPair> read_ports(StepReader &reader, const YAML::Node &node,
                                   const std::string &what);

// Returns the scope of a port.
PairScope scope_of(const PortOfPair &port, const SettingsPair &now);

// Returns the name of a channel from its number or its name. It must exist on at least one side.
std::string read_channel_name(StepReader &reader, const YAML::Node &node, const std::string &given);

// Reads a list of records: [stp-mode, ifi-port-type@0x1000].
std::vector<ParameterRecord> read_records(StepReader &reader, const YAML::Node &node);

}  // namespace lab
