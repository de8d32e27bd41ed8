// What would bring a parameter into agreement.
#pragma once

#include "sonic/fix.h"

namespace lab {

using Patch = std::vector<PatchOperation>;

struct FixReport {
  Fix fix;
  // Of left and right, the patch of its dump that alone is enough; nothing: that side cannot.
  std::array<std::optional<Patch>, 2> alone;
  // To be applied together, where neither side should change alone.
  std::optional<std::array<Patch, 2>> both;

  bool operator==(const FixReport &) const = default;
};

}  // namespace lab
