// A switch as scenarios and state files write it, in YAML: the whole of its settings, or what
// changes around it.
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

// The parameters of a mapping, {stp-mode: mst, ...}; `global`: those of the switch only, or those
// of an interface only.
std::vector<Entry> read_parameters(Reader &reader, const YAML::Node &node, const std::string &what,
                                   std::optional<bool> global = std::nullopt);

// The parameter that a key names, nullptr (and an error) when it names none.
const Parameter *read_parameter_name(Reader &reader, const YAML::Node &node);

// Reads the settings of a side, 0 or 1, from the source that a switch is taken `from`.
using ReadFrom = std::function<ReadSettings(const std::string &source, std::size_t side)>;

// The switch of a side. `folder` is where files that it is taken `from` are looked for.
Settings read_switch(Reader &reader, const YAML::Node &node, std::size_t side,
                     const std::string &folder, const ReadFrom &read_from);

// What a mapping with these keys says of the world around the library; what it does not give stays.
// The ports of a change, in a scenario, have no parameters.
inline const std::vector<std::string> world_keys = {"trunk", "user-vlans", "channels",
                                                    "internal-channels", "ports"};
void read_world(Reader &reader, const YAML::Node &node, Settings &settings, bool is_change);

// Does a text look like YAML, and nothing else?
bool is_state_file(std::string_view text);

ReadSettings read_state(const std::string &text);
std::string write_state(const Settings &settings);

}  // namespace lab
