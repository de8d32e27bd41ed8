#include "sonic/dump_text.h"

#include <algorithm>

#include "text/text.h"

namespace lab {
namespace {

constexpr std::string_view blanks = " \t\r\n";

bool is_utf16(std::string_view text) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) return true;
  return text.size() >= 2 && (text[0] == '\0') != (text[1] == '\0');
}

// The first brace that a line begins with; npos: there is none.
std::size_t first_brace(std::string_view text) {
  std::size_t line = 0;
  do {
    const std::size_t first = text.find_first_not_of(" \t\r", line);
    if (first == text.npos || text[first] == '{') return first;
    line = text.find('\n', first);
  } while (line++ != text.npos);
  return text.npos;
}

}  // namespace

std::string place_in_text(std::string_view text, std::size_t at) {
  const std::string_view before = text.substr(0, at);
  const std::string_view line =
      before.substr(before.rfind('\n') + 1);  // of the only line: npos + 1
  const auto starts_character = [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  };
  return "line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
         ", column " +
         std::to_string(1 + std::count_if(line.begin(), line.end(), starts_character));
}

std::optional<InputError> text_that_is_no_json(std::string_view text) {
  const auto error = [](const std::string &found, const std::string &where = "") {
    return InputError{0, 0, where, found, a_dump};
  };
  if (text.starts_with("\x1F\x8B")) return error("found data that gzip compressed");
  if (is_utf16(text)) return error("found UTF-16, not UTF-8");
  text = without_byte_order_mark(text);
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == text.npos) {
    return error(text.empty() ? "found nothing: it is empty" : "found nothing but blanks");
  }
  if (text[first] == '{' || text[first] == '[') return std::nullopt;
  const std::size_t brace = first_brace(text);
  if (brace == text.npos) return std::nullopt;
  const auto line = std::count(text.begin(), text.begin() + std::ptrdiff_t(brace), '\n') + 1;
  return error("found other lines before the JSON, which begins at line " + std::to_string(line),
               place_in_text(text, first));
}

}  // namespace lab
