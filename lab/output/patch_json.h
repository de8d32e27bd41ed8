// Patches as JSON.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "output/json.h"
#include "sonic/fix.h"

namespace lab {

// An RFC 6902 patch.
Json patch_to_json(const std::vector<PatchOperation> &patch);

// The text of a file with a patch, and with those of both sides.
std::string format_patch(const std::vector<PatchOperation> &patch);
std::string format_patches(const std::array<std::vector<PatchOperation>, 2> &patches);

}  // namespace lab
