// Changes of a configuration, and the patch that makes them.
#pragma once

#include <map>
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
};

// The changes as a patch of the dump that has these rows. Changes of several fixes belong into one
// patch: of two patches that each add the table or the row that both find missing, the last counts.
std::vector<PatchOperation> make_patch(const Rows &rows, const Changes &changes);

}  // namespace lab
