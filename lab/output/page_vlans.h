// The part of the page about VLANs: the twin VLANs, and what both switches say of each VLAN.
#pragma once

#include <string>

#include "report/pair.h"

namespace lab {

std::string write_vlan_section(const PairReport &report);

}  // namespace lab
