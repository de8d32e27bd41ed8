// The contents of a watched source now, and what changed in it.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "sonic/rows.h"
#include "text/error.h"
#include "text/wait.h"

namespace lab {

enum class SourceState {
  opening,  // it is asked for the first time
  here,
  lost,  // its contents are not known
};

struct Snapshot {
  SourceState state = SourceState::opening;
  std::string reason;          // of a loss
  bool refused = false;        // it is lost because it refuses access
  bool notifications = false;  // it notifies of changes
  TimePoint checked;           // when all of it was last read

  Rows rows;
  std::string state_text;                     // of a state file, which has no rows
  std::map<std::string, InputErrors> errors;  // of reading, by row; "": the whole source

  // Rows that changed, "TABLE|key", as they were when this was last emptied; "": the whole source.
  std::map<std::string, std::optional<Row>> before;
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

// A row has become another one.
void change_row(Snapshot &snapshot, const std::string &name, std::optional<Row> row);

// Forget the contents of the source.
void lose(Snapshot &snapshot, std::string reason, bool refused);

// The rows of a database that has been read, or is lost: an error says so.
ReadRows take_reading(Snapshot snapshot);

}  // namespace lab
