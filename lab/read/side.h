// One of the two switches of a comparison, from wherever its settings come.
#pragma once

#include <optional>
#include <string>

#include "read/rows.h"

namespace lab {

struct Side {
  std::string source;  // as it is shown: without a password
  Settings settings;
  std::optional<Rows> rows;  // of a dump or a database, which can be cured
};

// What a source is; by_content: a JSON object is a dump, anything else a state file.
enum class Format { by_content, state, dump };

struct ReadSide {
  Side side;
  Mistakes mistakes;  // with some, the settings are of no use
};

// A state file or a dump; "-" is standard input.
ReadSide read_side(const std::string &path, Format format);

}  // namespace lab
