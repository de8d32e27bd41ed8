#include "tasks/side.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "sonic/feed.h"
#include "text/file.h"

namespace lab {
namespace {

// Returns nullopt if the path is not a regular file.
std::optional<std::time_t> find_modified(const std::string &path) {
  struct stat status {};
  const bool is_file = stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  return is_file ? std::optional(status.st_mtime) : std::nullopt;
}

}  // namespace

ParsedSource parse_source_argument(const std::string &text, std::optional<std::size_t> password_of,
                                   const std::string &name_space) {
  ParsedSource parsed = parse_source(text, password_of);
  Source &source = parsed.source;
  source.name_space = name_space;
  const std::size_t hash = source.place.rfind('#');
  std::error_code error;
  if (source.kind == Source::Kind::file && hash != text.npos && hash != 0 &&
      !std::filesystem::exists(source.place, error)) {
    source.name_space = source.place.substr(hash + 1);
    source.place.resize(hash);
  }
  return parsed;
}

Side convert_rows(const Source &source, ReadRows rows) {
  ReadSettings read = interpret_rows(rows.rows, rows.errors);
  return {.source = source.label,
          .settings = std::move(read.settings),
          .rows = std::move(rows.rows),
          .errors = std::move(read.errors)};
}

Side parse_side(const Source &source, const std::string &bytes, Format format) {
  Side side;
  if (format == Format::dump || (format == Format::by_content && !is_state_file(bytes))) {
    side = convert_rows(source, read_dump(bytes, source.name_space));
  } else {
    ReadSettings read = read_state(bytes);
    side.source = source.label;
    side.settings = std::move(read.settings);
    side.errors = std::move(read.errors);
  }
  side.modified = find_modified(source.place);
  return side;
}

std::string read_regular_file(const std::string &path, std::string &bytes) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) return std::strerror(errno);
  if (!S_ISREG(status.st_mode)) return "it is not a regular file";
  return read_all(file, bytes);
}

std::vector<Side> read_sides(const std::vector<ParsedSource> &sources, Format format,
                             const ReadLimits &limits) {
  std::vector<Side> sides(sources.size());
  std::vector<Source> databases;
  std::vector<std::size_t> side_of_database;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const auto &[source, errors] = sources[i];
    sides[i].source = source.label;
    sides[i].errors = errors;
    if (!errors.empty()) continue;
    if (source.kind != Source::Kind::file) {
      databases.push_back(source);
      side_of_database.push_back(i);
      continue;
    }
    const std::string bytes = read_file(source.place, sides[i].errors);
    if (sides[i].errors.empty()) sides[i] = parse_side(source, bytes, format);
  }
  std::vector<ReadRows> read = read_databases(databases, limits);
  for (std::size_t i = 0; i < read.size(); ++i) {
    sides[side_of_database[i]] = convert_rows(databases[i], std::move(read[i]));
  }
  return sides;
}

ReadSettings read_source_settings(const std::string &source, std::size_t side) {
  Side read =
      std::move(read_sides({parse_source_argument(source, side)}, Format::by_content, {})[0]);
  return {std::move(read.settings), std::move(read.errors), read.source};
}

}  // namespace lab
