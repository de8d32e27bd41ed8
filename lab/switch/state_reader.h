// A switch as scenarios and state files write it, in YAML: the whole of its settings, or what
// changes around it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "pair/protocol.h"
#include "sonic/rows.h"
#include "switch/names.h"
#include "switch/settings.h"
#include "text/yaml.h"

namespace lab {

// The parameters of a mapping, {stp-mode: mst, ...}; `global`: those of the switch only, or those of
// an interface only.
std::vector<Entry> read_parameters(Reader &reader, const YAML::Node &node, const std::string &what,
                                   std::optional<bool> global = std::nullopt);

// The parameter that a key names, nullptr (and an error) when it names none.
const ParameterName *read_parameter_name(Reader &reader, const YAML::Node &node);

// A switch. `folder` is where a file that it is taken `from` is looked for.
Settings read_switch(Reader &reader, const YAML::Node &node, const std::string &what,
                     const std::string &folder);

// A state file.
ReadSettings read_state(const std::string &text);

// What a `change` says, made of what the switches are by now; they become what it makes them.
std::array<WorldChange, 2> read_change(Reader &reader, const YAML::Node &node,
                                       const std::array<bool, 2> &on, SettingsPair &now);

// A switch after a change.
void apply(const WorldChange &change, Settings &settings);

}  // namespace lab
