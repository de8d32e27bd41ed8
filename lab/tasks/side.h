// One of the two switches of a comparison, from wherever its settings come.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "sonic/limits.h"
#include "sonic/rows.h"
#include "sonic/source.h"
#include "switch/state_file.h"

namespace lab {

struct Side {
  std::string source = {};  // as it is shown: without a password
  Settings settings = {};
  std::optional<Rows> rows = {};             // of a dump or a database, which can be patched
  std::optional<std::time_t> modified = {};  // a file
  InputErrors errors = {};                   // all of them; with some, the settings are of no use
};

// What a file is; by_content: a JSON object is a dump, anything else a state file.
enum class Format { by_content, state, dump };

// A source as it was given, and whose password the environment has for it: that of the left (0),
// the right (1) or neither. "dump.json#asic0" is a namespace of a dump, unless a file has that
// name.
ParsedSource find_source(const std::string &text, std::optional<std::size_t> password_of,
                         const std::string &name_space = "");

// What the bytes of a file say.
Side read_text(const Source &source, const std::string &bytes, Format format);

// What the rows of a database say.
Side read_side(const Source &source, ReadRows rows);

// Why a file cannot be read, or is no regular one; "": it is read.
std::string read_regular_file(const std::string &path, std::string &bytes);

// The switches that sources say: state files or dumps ("-" is standard input), or databases, which
// are read at the same time. Throws Interrupted.
std::vector<Side> read_sides(const std::vector<ParsedSource> &sources, Format format,
                             const ReadLimits &limits);

// One of them, for a scenario.
ReadSettings settings_from(const std::string &source, std::size_t which);

}  // namespace lab
