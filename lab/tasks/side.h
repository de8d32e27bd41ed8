// One of the two switches of a comparison, from wherever its settings come.
#pragma once

#include <optional>
#include <string>

#include "sonic/rows.h"
#include "switch/state_reader.h"
#include "tasks/watched_file.h"

namespace lab {

struct Side {
  std::string source;  // as it is shown: without a password
  Settings settings;
  std::optional<Rows> rows;  // of a dump or a database, which can be patched
};

// What a file is; by_content: a JSON object is a dump, anything else a state file.
enum class Format { by_content, state, dump };

// What the bytes of a file say.
ReadText read_text(const std::string &bytes, Format format);

struct ReadSide {
  Side side;
  InputErrors errors;  // with some, the settings are of no use
};

// The switch that a source says: a state file or a dump ("-" is standard input), or a database.
// `which` of the two, 0 or 1, tells whose password the environment has. Throws Interrupted.
ReadSide read_side(const std::string &source, std::size_t which, Format format);

// The same, for a scenario.
ReadSettings settings_from(const std::string &source, std::size_t which);

}  // namespace lab
