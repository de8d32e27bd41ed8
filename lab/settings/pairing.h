// Two switches beside one another: what joins them, and what a comparison of them cannot promise.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "settings/settings.h"

namespace lab {

using PairOfSettings = std::array<const Settings *, 2>;  // left, right

// A channel by its name; nullptr: the switch has none such. Its port: the first that belongs to it.
const Channel *find_channel(const Settings &settings, std::string_view name);
const Port *find_port(const Settings &settings, std::string_view channel);

// The VLANs that the same channel carries on both switches.
Vlans twin_vlans(const PairOfSettings &settings);

// What stands beside a verdict and does not change it, a sentence each.
std::vector<std::string> notes_of(const PairOfSettings &settings);

}  // namespace lab
