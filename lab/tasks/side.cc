#include "tasks/side.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "sonic/read_databases.h"
#include "sonic/source.h"
#include "switch/state_file.h"
#include "text/file.h"

namespace lab {
namespace {

void read_settings_file(const std::string &given, const std::string &name_space, Format format,
                        ReadSide &read) {
  const auto [path, selected] = split_namespace(given, name_space);
  read.side.modified = find_modified(path);
  const std::string bytes = read_file(path, read.errors);
  if (!read.errors.empty()) return;
  ReadText text = read_text(bytes, format, selected);
  read.errors = std::move(text.errors);
  read.side.settings = std::move(text.settings);
  read.side.rows = std::move(text.rows);
}

void take_rows(ReadDatabase database, ReadSide &read) {
  if (!database.lost.empty()) {
    read.errors.push_back({0, 0, "", database.lost, "a configuration database"});
    return;
  }
  ReadSettings settings = settings_of(database.rows, database.errors);
  read.errors = std::move(settings.errors);
  read.side.settings = std::move(settings.settings);
  read.side.rows = std::move(database.rows);
}

}  // namespace

std::optional<std::time_t> find_modified(const std::string &path) {
  struct stat status {};
  const bool is_file = stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  return is_file ? std::optional(status.st_mtime) : std::nullopt;
}

std::pair<std::string, std::string> split_namespace(const std::string &path,
                                                    const std::string &name_space) {
  const std::size_t mark = path.rfind('#');
  std::error_code error;
  if (mark == path.npos || mark == 0 || std::filesystem::exists(path, error)) {
    return {path, name_space};
  }
  return {path.substr(0, mark), path.substr(mark + 1)};
}

std::string read_regular_file(const std::string &path, std::string &bytes) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) return std::strerror(errno);
  if (!S_ISREG(status.st_mode)) return "this is no regular file";
  return read_all(file, bytes);
}

ReadText read_text(const std::string &bytes, Format format, const std::string &name_space) {
  ReadText text;
  ReadSettings settings;
  if (format == Format::dump || (format == Format::by_content && !is_state_file(bytes))) {
    ReadRows rows = read_dump(bytes, name_space);
    settings = settings_of(rows.rows, rows.errors);
    text.rows = std::move(rows.rows);
  } else {
    settings = read_state(bytes);
  }
  text.settings = std::move(settings.settings);
  text.errors = std::move(settings.errors);
  return text;
}

std::vector<ReadSide> read_sides(const std::vector<GivenSource> &sources, Format format,
                                 const ReadLimits &limits) {
  std::vector<ReadSide> sides(sources.size());
  std::vector<Source> databases;
  std::vector<std::size_t> side_of_database;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    ParsedSource parsed = parse_source(sources[i].text, sources[i].password_of);
    sides[i].side.source = printable(parsed.source.shown);
    if (!parsed.errors.empty()) {
      sides[i].errors = std::move(parsed.errors);
    } else if (parsed.source.kind == Source::Kind::file) {
      read_settings_file(parsed.source.place, sources[i].name_space, format, sides[i]);
    } else {
      databases.push_back(std::move(parsed.source));
      side_of_database.push_back(i);
    }
  }
  std::vector<ReadDatabase> read = read_databases(databases, limits);
  for (std::size_t i = 0; i < read.size(); ++i) {
    take_rows(std::move(read[i]), sides[side_of_database[i]]);
  }
  return sides;
}

ReadSettings settings_from(const std::string &source, std::size_t which) {
  ReadSide read = std::move(read_sides({{source, which, ""}}, Format::by_content, {})[0]);
  return {std::move(read.side.settings), std::move(read.errors), read.side.source};
}

}  // namespace lab
