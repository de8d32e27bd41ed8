// Two switches beside one another: what joins them, and what a comparison of them cannot promise.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "switch/settings.h"

namespace lab {

// The port that stands for a channel; nullptr: the switch has no such channel.
const Port *port_of_channel(const Settings &settings, std::string_view channel);

// What stands beside a verdict and does not change it, a sentence each.
std::vector<std::string> notes_of(const PairOfSettings &settings);

}  // namespace lab
