// What would bring two switches into line.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sonic/fields.h"
#include "sonic/patch.h"
#include "switch/settings.h"

namespace lab {

// VLANs that differ in the same way.
struct VlanGroup {
  Vlans vlans;
  // Now, on left and right: 1 where spanning tree is disabled, else 0; of maps the instance.
  std::array<uint32_t, 2> words;

  bool operator==(const VlanGroup &) const = default;
};

struct Fix {
  enum class Kind : uint8_t {
    with_mode,    // one side does not send the parameter: the fix of the mode brings it
    common_name,  // both regions are named after their switch
    changes,      // either side can take what the other has
  };
  Kind kind = Kind::changes;
  uint16_t type = 0;    // of the parameter
  std::string channel;  // empty: of the switch
  // The field that has the parameter; nullptr where a side has no rows, and the fix is one of
  // settings.
  const Field *field = nullptr;
  // Of left and right; each alone brings the parameter into line. Nothing: that side cannot.
  std::array<std::optional<Changes>, 2> alone;
  // To be made together, where neither should change alone.
  std::optional<std::array<Changes, 2>> both;
  std::array<std::optional<Bytes>, 2> values;  // of the parameter now
  std::vector<VlanGroup> groups;               // that differ, of disabled VLANs and of maps

  bool operator==(const Fix &) const = default;
};

// The fix of a parameter that differs, of the switch (no channel) or of a channel. `rows`: nullptr
// for a side that has none.
Fix find_fix(const PairOfSettings &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type);

}  // namespace lab
