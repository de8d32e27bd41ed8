// Patches as JSON.
#pragma once

#include <vector>

#include "output/json.h"
#include "sonic/patch.h"

namespace lab {

// An RFC 6902 patch.
Json patch_to_json(const std::vector<PatchOperation> &patch);

}  // namespace lab
