// What would bring two switches into line: changes of configurations, and their patches.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sonic/rows.h"

namespace lab {

// A field of a configuration and what it is to be; nothing: it is to go.
struct Change {
  std::string table;
  std::string key;
  std::string field;
  std::optional<FieldValue> value;

  bool operator==(const Change &) const = default;
};
using Changes = std::vector<Change>;

// The rows after the changes.
Rows apply_changes(Rows rows, const Changes &changes);

// An operation of an RFC 6902 patch of a dump.
struct PatchOperation {
  enum class Op { add, remove, replace };
  Op op;
  std::vector<std::string> path;  // table, key, field, as far down as it goes
  // Of a field, a row or a table; nothing where it is removed.
  std::variant<std::monostate, FieldValue, Row, Table> value;

  bool operator==(const PatchOperation &) const = default;
};

// The changes as a patch of the dump that has these rows. Changes of several fixes belong into one
// patch: of two patches that each add the table or the row that both find missing, the last counts.
std::vector<PatchOperation> make_patch(const Rows &rows, const Changes &changes);

// VLANs that both sides have elsewhere: as words, spanning tree disabled or not, or the instance.
struct VlanGroup {
  Vlans vlans;
  std::array<uint32_t, 2> words;  // now, on left and right

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
  // The field that has the parameter; nullptr where there is none, and the fix is one of settings.
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
// for a side that has none. Of an intended state on the left, only the right side changes.
Fix find_fix(const PairOfSettings &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type, bool is_intended = false);

// The row, "TABLE|key", by which a switch has a multi-chassis channel that its peer has.
std::string find_channel_row(const Settings &settings, const Settings &peer,
                             const std::string &channel);

}  // namespace lab
