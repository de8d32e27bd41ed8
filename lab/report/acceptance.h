// Accepted differences: reads them from a file, and marks them in a report.
#pragma once

#include "report/pair.h"
#include "text/error.h"

namespace lab {

// The text of a value; nullopt: not sent.
using ValueText = std::optional<std::string>;

struct AcceptEntry {
  enum class Kind : uint8_t { parameter, missing_channel, note, incomplete };

  int line = 0;  // in the file
  Kind kind = Kind::parameter;
  std::string scope;  // "switch", a channel, or a pattern
  std::string pair;   // a name or a pattern; empty: every pair
  Acceptance acceptance;
  uint16_t type = 0;                               // of the parameter
  std::array<std::optional<ValueText>, 2> values;  // on left and right; nullopt: any
  NoteKind note = NoteKind::acceptance;
  Incomplete incomplete = Incomplete::no_channels;
};

struct ReadAcceptList {
  std::vector<AcceptEntry> entries;
  InputErrors errors;  // in the order of the file; if not empty, the entries are invalid
};

// Parses the text of a file.
ReadAcceptList read_accept_list(const std::string &text);

// Returns the local date: "2026-11-24".
std::string format_today();

// Marks the differences that the entries accept. Adds a note for each entry that has expired,
// matches nothing or still has the reason TODO. Returns which entries match.
std::vector<bool> accept_differences(const std::vector<AcceptEntry> &entries,
                                     const std::string &today, PairReport &report);

// Writes a file that accepts the differences in a report.
std::string format_accept_list(const PairReport &report);

}  // namespace lab
