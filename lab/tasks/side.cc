#include "tasks/side.h"

#include "sonic/read_databases.h"
#include "sonic/source.h"
#include "switch/state_reader.h"
#include "text/yaml.h"

namespace lab {
namespace {

bool looks_like_a_dump(std::string_view text) {
  text = without_byte_order_mark(text);
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != text.npos && (text[first] == '{' || text[first] == '[');
}

void read_file(const std::string &path, Format format, ReadSide &read) {
  const std::string bytes = file_text(path, read.errors);
  if (!read.errors.empty()) return;
  ReadText text = read_text(bytes, format);
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

ReadText read_text(const std::string &bytes, Format format) {
  ReadText text;
  ReadSettings settings;
  if (format == Format::dump || (format == Format::by_content && looks_like_a_dump(bytes))) {
    ReadRows rows = read_dump(bytes);
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
      read_file(parsed.source.place, format, sides[i]);
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

ReadSide read_side(const std::string &source, std::optional<std::size_t> password_of, Format format,
                   const ReadLimits &limits) {
  return std::move(read_sides({{source, password_of}}, format, limits)[0]);
}

}  // namespace lab
