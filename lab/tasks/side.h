// One of the two switches of a comparison, from wherever its settings come.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "sonic/limits.h"
#include "sonic/rows.h"
#include "switch/state_file.h"

namespace lab {

// What the bytes of a file say.
struct ReadText {
  std::optional<Rows> rows;  // of a dump
  Settings settings;
  InputErrors errors;  // all of them; with some, the settings are of no use
};

struct Side {
  std::string source;  // as it is shown: without a password
  Settings settings;
  std::optional<Rows> rows;                  // of a dump or a database, which can be patched
  std::optional<std::time_t> modified = {};  // a file
};

// What a file is; by_content: a JSON object is a dump, anything else a state file.
enum class Format { by_content, state, dump };

// What the bytes of a file say. `name_space` selects an ASIC in a dump of several.
ReadText read_text(const std::string &bytes, Format format, const std::string &name_space = "");

// "dump.json#asic0" is a namespace of a dump, unless a file has that name: path and namespace.
std::pair<std::string, std::string> split_namespace(const std::string &path,
                                                    const std::string &name_space);

// Of a file; nothing: it is none.
std::optional<std::time_t> find_modified(const std::string &path);

// Why a file cannot be read, or is no regular one; "": it is read.
std::string read_regular_file(const std::string &path, std::string &bytes);

struct ReadSide {
  Side side;
  InputErrors errors;  // with some, the settings are not usable
};

// A source as it was given, and whose password the environment has for it: that of the left (0),
// the right (1) or neither.
struct GivenSource {
  std::string text;
  std::optional<std::size_t> password_of;
  std::string name_space;  // of a dump of several ASICs; empty: the only one
};

// The switches that sources say: state files or dumps ("-" is standard input), or databases, which
// are read at the same time. Throws Interrupted.
std::vector<ReadSide> read_sides(const std::vector<GivenSource> &sources, Format format,
                                 const ReadLimits &limits);

// One of them, for a scenario.
ReadSettings settings_from(const std::string &source, std::size_t which);

}  // namespace lab
