// One side of a comparison, read from a state file, a dump or a database.
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
  std::string source = {};  // its label, without a password
  Settings settings = {};
  std::optional<Rows> rows = {};             // only of a dump or a database; required for a patch
  std::optional<std::time_t> modified = {};  // only of a file
  InputErrors errors = {};                   // if not empty, the settings are invalid
};

// The format of a file; by_content: text that looks like YAML is a state file, else a dump.
enum class Format { by_content, state, dump };

// Parses a source argument. A missing password is read from the environment variable of the left
// (0) or right (1) side, or from neither. "dump.json#asic0" selects a namespace of a dump, unless a
// file of that name exists.
ParsedSource parse_source_argument(const std::string &text, std::optional<std::size_t> password_of,
                                   const std::string &name_space = "");

// Parses the contents of a file.
Side parse_side(const Source &source, const std::string &bytes, Format format);

// Converts the rows of a dump or a database.
Side convert_rows(const Source &source, ReadRows rows);

// Reads a regular file. Returns the error, or "".
std::string read_regular_file(const std::string &path, std::string &bytes);

// Reads state files, dumps ("-" is standard input) and databases; databases are read concurrently.
// Throws Interrupted.
std::vector<Side> read_sides(const std::vector<ParsedSource> &sources, Format format,
                             const ReadLimits &limits);

// Reads the settings of a side, 0 or 1, for a scenario. Throws Interrupted.
ReadSettings read_source_settings(const std::string &source, std::size_t side);

}  // namespace lab
