// What would bring two switches into step, in the words of their configuration.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "output/json.h"
#include "report/pairing.h"
#include "sonic/rows.h"

namespace lab {

// A field of a configuration and what it is to be; nothing: it is to go. Without the name of a field
// the row is to be there, whatever it says.
struct Change {
  std::string table;
  std::string key;
  std::string field;
  std::optional<FieldValue> value;
};
using Changes = std::vector<Change>;

// An RFC 6902 patch.
using Patch = Json;

struct Fix {
  // Of left and right; each alone brings the row into step. Nothing: that side cannot.
  std::array<std::optional<Changes>, 2> alone;
  // To be made together, where neither should stand alone.
  std::optional<std::array<Changes, 2>> both;
  // For a person: "STP_PORT|PortChannel10 root_guard: true on right, or false on left".
  std::string text;
};

// The fix of a parameter that differs, of the switch (no channel) or of a channel. Where a side has
// no rows it is a line in the words of state files.
Fix find_fix(const PairOfSettings &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type);

// The changes as an RFC 6902 patch of the dump that has these rows. Changes of several fixes belong
// into one patch: two patches would each add the table or the row that both find missing.
Patch patch_of(const Rows &rows, const Changes &changes);

// The rows after the changes.
Rows changed(Rows rows, const Changes &changes);

}  // namespace lab
