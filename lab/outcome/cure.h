// What would bring two real switches into step, in the words of their configuration.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "outcome/json.h"
#include "read/rows.h"

namespace lab {

struct Cure {
  // RFC 6902 patches of each side's dump; each alone brings the row into step. Nothing: that side
  // cannot.
  std::optional<Json> left;
  std::optional<Json> right;
  // Patches to be applied together, where neither should stand alone.
  std::optional<std::array<Json, 2>> both;
  std::string text;  // for a person: "STP_PORT|PortChannel10 root_guard: true on right, or ..."
};

// The cure of a parameter that differs: of the switch, or of a channel by its name.
Cure cure_of(const std::array<const Rows *, 2> &rows, const std::string &channel, uint16_t type);

}  // namespace lab
