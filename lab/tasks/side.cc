#include "tasks/side.h"

#include "sonic/database.h"
#include "sonic/source.h"
#include "switch/state_reader.h"
#include "text/file.h"

namespace lab {
namespace {

bool looks_like_a_dump(std::string_view text) {
  text = without_byte_order_mark(text);
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != text.npos && (text[first] == '{' || text[first] == '[');
}

void read_file(const std::string &path, Format format, ReadSide &read) {
  const std::string bytes = read_file(path, read.errors);
  if (!read.errors.empty()) return;
  ReadText text = read_text(bytes, format);
  read.errors = std::move(text.errors);
  read.side.settings = std::move(text.settings);
  read.side.rows = std::move(text.rows);
}

void read_from_database(const Source &source, ReadSide &read) {
  ReadDatabase database = read_database(source);
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

ReadSide read_side(const std::string &source, std::size_t which, Format format) {
  ReadSide read;
  ParsedSource parsed = parse_source(source, which);
  read.side.source = printable(parsed.source.shown);
  if (!parsed.errors.empty()) {
    read.errors = std::move(parsed.errors);
  } else if (parsed.source.kind == Source::Kind::file) {
    read_file(parsed.source.place, format, read);
  } else {
    read_from_database(parsed.source, read);
  }
  return read;
}

}  // namespace lab
