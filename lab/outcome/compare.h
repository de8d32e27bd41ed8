// The comparison of two switches from what they are set to: the document of `mcec-lab compare`.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "outcome/json.h"
#include "read/rows.h"
#include "settings/settings.h"

namespace lab {

// One of the two switches, and where its settings come from.
struct Side {
  std::string source;  // as it is shown: without a password
  Settings settings;
  std::optional<Rows> rows;  // of a dump or a database, which can be cured
};

// What compare says, as docs/lab.md tells. Throws SwitchFailed and Interrupted.
Json compare(const std::array<Side, 2> &sides);

}  // namespace lab
