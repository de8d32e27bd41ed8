// The digest by which bridges compare their MST regions without showing their VLAN maps.
#pragma once

#include <string>

#include "text/text.h"

namespace lab {

// The IEEE 802.1Q configuration digest of a VLAN map, 32 hexadecimal digits in capitals. Of VLANs 0
// and 4095, which no bridge maps, and past the end of a short map, instance 0 is taken.
std::string region_digest(const Bytes &map);

}  // namespace lab
