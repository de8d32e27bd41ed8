#include "read/side.h"

#include "language/yaml.h"
#include "read/switch.h"

namespace lab {
namespace {

bool looks_like_a_dump(std::string_view text) {
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != text.npos && (text[first] == '{' || text[first] == '[');
}

}  // namespace

ReadSide read_side(const std::string &path, Format format) {
  ReadSide read;
  read.side.source = printable(path);
  const std::string text = file_text(path, read.mistakes);
  if (!read.mistakes.empty()) return read;
  if (format == Format::dump || (format == Format::by_content && looks_like_a_dump(text))) {
    ReadRows rows = read_dump(text);
    ReadSettings settings = settings_of(rows.rows, rows.mistakes);
    read.mistakes = std::move(settings.mistakes);
    read.side.settings = std::move(settings.settings);
    read.side.rows = std::move(rows.rows);
  } else {
    ReadSettings settings = read_state(text);
    read.mistakes = std::move(settings.mistakes);
    read.side.settings = std::move(settings.settings);
  }
  return read;
}

}  // namespace lab
