// The current contents of a watched source, and its recent changes.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "sonic/rows.h"
#include "text/error.h"
#include "text/wait.h"

namespace lab {

// The contents of a source, serialized to save memory: a watch keeps the rows of all its pairs.
struct Contents {
  bool has_rows = true;
  std::string text;  // the rows, or the settings of a state file, for comparison only

  bool operator==(const Contents &) const = default;
};
using SharedContents = std::shared_ptr<const Contents>;

SharedContents pack(const Rows &rows);
Rows unpack(const SharedContents &contents);  // empty for nullptr and for a state file

enum class SourceState {
  connecting,  // for the first time
  connected,
  disconnected,  // the contents are unknown
};

struct Snapshot {
  SourceState state = SourceState::connecting;
  std::string reason;          // why it is disconnected
  bool refused = false;        // disconnected because access was refused
  bool notifications = false;  // the source sends notifications of changes
  TimePoint checked;           // the last reading of all rows, or check of their number

  SharedContents contents;                    // nullptr until read
  std::map<std::string, InputErrors> errors;  // of reading, by row; "": the whole source

  // Of the changes since settling last began.
  std::optional<TimePoint> first_change;
  std::optional<TimePoint> last_change;
};

// Returns the table and the key of "TABLE|key"; without '|', an empty table and the whole name.
std::pair<std::string, std::string> split_row_name(const std::string &name);

// Returns nullptr if there is no such row.
const Row *find_row(const Rows &rows, const std::string &name);

// Inserts or replaces a row; nullopt removes it.
void set_row(Rows &rows, const std::string &name, std::optional<Row> row);

// Returns the names of the rows that differ, in order.
std::vector<std::string> differing_rows(const Rows &a, const Rows &b);

void record_change(Snapshot &snapshot, TimePoint now);

// Returns true if the contents changed.
bool set_contents(Snapshot &snapshot, SharedContents contents);

// Returns all errors of reading, and one for a source that is disconnected.
InputErrors all_errors(const Snapshot &snapshot);

// Discards the contents of the source.
void mark_disconnected(Snapshot &snapshot, std::string reason, bool refused);

}  // namespace lab
