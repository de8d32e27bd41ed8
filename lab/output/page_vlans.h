// The part of the page about VLANs: the twin VLANs, and what both switches say of each VLAN.
#pragma once

#include <string>

#include "output/json.h"

namespace lab {

// The HTML, of a comparison's document.
std::string page_of_vlans(const Json &document);

}  // namespace lab
