// Settings of a switch in YAML, as in scenarios and state files.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "switch/names.h"
#include "switch/settings.h"
#include "text/yaml.h"

namespace lab {

// Reads a mapping of parameters, {stp-mode: mst, ...}. `global`: accepts only parameters of the
// switch (true) or of interfaces (false).
std::vector<Entry> read_parameters(Reader &reader, const YAML::Node &node, const std::string &what,
                                   std::optional<bool> global = std::nullopt);

// Reads the name of a parameter. Adds an error and returns nullptr if it is unknown.
const Parameter *read_parameter_name(Reader &reader, const YAML::Node &node);

// Reads the settings of a side (0 or 1) from the source under the key 'from'.
using ReadFrom = std::function<ReadSettings(const std::string &source, std::size_t side)>;

// Reads the switch of a side. Relative paths under 'from' are relative to `folder`.
Settings read_switch(Reader &reader, const YAML::Node &node, std::size_t side,
                     const std::string &folder, const ReadFrom &read_from);

// Reads the state of the platform from a mapping with these keys. A missing key changes nothing.
// `is_change`: in the step 'change' of a scenario, where ports have no parameters.
inline const std::vector<std::string> platform_keys = {"trunk", "user-vlans", "channels",
                                                       "internal-channels", "ports"};
void read_platform(Reader &reader, const YAML::Node &node, Settings &settings, bool is_change);

// Returns whether a text looks like YAML, and not like JSON.
bool is_state_file(std::string_view text);

ReadSettings read_state(const std::string &text);
std::string write_state(const Settings &settings);

}  // namespace lab
