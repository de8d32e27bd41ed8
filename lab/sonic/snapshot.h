// The contents of a watched source now, and what changed in it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "sonic/rows.h"
#include "text/error.h"
#include "text/wait.h"

namespace lab {

// What a source contains. Rows are packed into one text, as a watch of many pairs keeps the rows of
// all of them.
struct Contents {
  bool has_rows = true;
  std::string text;  // the rows, or the settings of a state file, which are only compared

  bool operator==(const Contents &) const = default;
};
using SharedContents = std::shared_ptr<const Contents>;

SharedContents pack(const Rows &rows);
Rows unpack(const SharedContents &contents);  // none without contents, and of a state file

enum class SourceState {
  connecting,  // it is asked for the first time
  connected,
  disconnected,  // its contents are not known
};

struct Snapshot {
  SourceState state = SourceState::connecting;
  std::string reason;          // of a loss
  bool refused = false;        // it is lost because it refuses access
  bool notifications = false;  // it notifies of changes
  TimePoint checked;           // when all of it was last read

  SharedContents contents;                    // nullptr: they have not been read
  std::map<std::string, InputErrors> errors;  // of reading, by row; "": the whole source

  // Of the changes that have been noticed since settling began last.
  std::optional<TimePoint> first_change;
  std::optional<TimePoint> last_change;
};

// The table and the key of "TABLE|key"; without a '|' the key is the whole, of no table.
std::pair<std::string, std::string> split_row_name(const std::string &name);

// A row as it stands, nullptr when there is none.
const Row *find_row(const Rows &rows, const std::string &name);
void set_row(Rows &rows, const std::string &name, std::optional<Row> row);

// The names of the rows that are not the same.
std::vector<std::string> differing_rows(const Rows &a, const Rows &b);

void notice_change(Snapshot &snapshot, TimePoint now);

// Are the contents other ones than before?
bool set_contents(Snapshot &snapshot, SharedContents contents);

InputErrors all_errors(const Snapshot &snapshot);  // also that it is lost

// Forget the contents of the source.
void mark_disconnected(Snapshot &snapshot, std::string reason, bool refused);

}  // namespace lab
