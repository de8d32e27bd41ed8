// Fixes: changes that make two configurations equal, and patches of the changes.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sonic/rows.h"

namespace lab {

struct Change {
  std::string table;
  std::string key;
  std::string field;
  std::optional<FieldValue> value;  // nullopt: remove the field

  bool operator==(const Change &) const = default;
};
using Changes = std::vector<Change>;

// Returns the changed rows.
Rows apply_changes(Rows rows, const Changes &changes);

// An operation of an RFC 6902 patch of a dump.
struct PatchOperation {
  enum class Op { add, remove, replace };
  Op op;
  std::vector<std::string> path;  // a table, a table and a key, or these and a field
  // A field, row or table; monostate for `remove`.
  std::variant<std::monostate, FieldValue, Row, Table> value;

  bool operator==(const PatchOperation &) const = default;
};

// Returns the changes as a patch of the dump with these rows. Make one patch for the changes of
// several fixes: if two patches each add the same missing table or row, the last overwrites the
// first.
std::vector<PatchOperation> make_patch(const Rows &rows, const Changes &changes);

// VLANs whose value differs in the same way.
struct VlanGroup {
  Vlans vlans;
  // On left and right: 1 or 0 for spanning tree disabled or enabled, or the MST instance.
  std::array<uint32_t, 2> words;

  bool operator==(const VlanGroup &) const = default;
};

struct Fix {
  enum class Kind : uint8_t {
    with_mode,    // one side does not send the parameter: fix the mode first
    common_name,  // both regions are named after their switch: give both the same name
    changes,      // one side copies the value of the other
  };
  Kind kind = Kind::changes;
  uint16_t type = 0;    // of the parameter
  std::string channel;  // empty: a parameter of the switch
  // The field that sets the parameter; nullptr without one: the fix names settings only.
  const Field *field = nullptr;
  // On left and right: either one is a complete fix. nullopt: not possible on that side.
  std::array<std::optional<Changes>, 2> alone;
  // A fix that needs changes on both sides.
  std::optional<std::array<Changes, 2>> both;
  std::array<std::optional<Bytes>, 2> values;  // current values of the parameter
  std::vector<VlanGroup> groups;               // for disabled VLANs and for instance maps

  bool operator==(const Fix &) const = default;
};

// Finds the fix for a parameter that differs, of the switch (empty channel) or of a channel.
// `rows`: nullptr for a side without rows. If the left side is an intended state, only the right
// side changes.
Fix find_fix(const SettingsPairView &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type, bool is_intended = false);

// Returns the row, "TABLE|key", that adds a multi-chassis channel of the peer to a switch.
std::string find_channel_row(const Settings &settings, const Settings &peer,
                             const std::string &channel);

}  // namespace lab
