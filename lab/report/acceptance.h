// Accepted differences: what may differ according to a file, and its effect on a report.
#pragma once

#include "report/pair.h"
#include "text/error.h"

namespace lab {

// The text of a value in a document; nothing: not sent.
using ValueText = std::optional<std::string>;

struct AcceptEntry {
  enum class Kind : uint8_t { parameter, missing_channel, note, incomplete };

  int line = 0;  // in the file
  Kind kind = Kind::parameter;
  std::string scope;  // "switch", a channel, or a pattern
  std::string pair;   // a name or a pattern; empty: every pair
  Acceptance acceptance;
  uint16_t type = 0;                               // of the parameter
  std::array<std::optional<ValueText>, 2> values;  // on left and right; nothing: any
  NoteKind note = NoteKind::acceptance;
  Incomplete incomplete = Incomplete::no_channels;
};

struct ReadAcceptList {
  std::vector<AcceptEntry> entries;
  InputErrors errors;  // in the order of the file; with some, the entries are not usable
};

// Reads the text of a file.
ReadAcceptList read_accept_list(const std::string &text);

// "2026-11-24", local time.
std::string format_today();

// Marks what the entries accept, and adds a note for each that has expired, matches nothing or
// still has the reason TODO. Returns which entries have matched.
std::vector<bool> accept_differences(const std::vector<AcceptEntry> &entries,
                                     const std::string &today, PairReport &report);

// A file that accepts what differs in a report.
std::string format_accept_list(const PairReport &report);

}  // namespace lab
