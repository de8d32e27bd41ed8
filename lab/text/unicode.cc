// Characters of UTF-8: what is one, how wide it is, what a terminal must not see.
#include <fmt/core.h>
#include <unictype.h>
#include <unilbrk.h>
#include <unistr.h>
#include <uniwidth.h>

#include "text/text.h"

namespace lab {
namespace {

constexpr std::size_t longest_character = 4;
constexpr ucs4_t byte_order_mark = 0xFEFF;
constexpr ucs4_t replacement = 0xFFFD;

const uint8_t *bytes_of(std::string_view text) {
  return reinterpret_cast<const uint8_t *>(text.data());
}

struct Character {
  ucs4_t point;
  std::size_t length;  // 0: there is none
};

Character character_at(std::string_view text) {
  ucs4_t point = replacement;
  const int length = u8_mbtoucr(&point, bytes_of(text), text.size());
  return length > 0 ? Character{point, static_cast<std::size_t>(length)}
                    : Character{replacement, 0};
}

bool is_printable(std::string_view character) {
  constexpr uint32_t unseen = UC_CATEGORY_MASK_Cc | UC_CATEGORY_MASK_Zl | UC_CATEGORY_MASK_Zp;
  const auto [point, length] = character_at(character);
  return length > 0 && !uc_is_general_category_withtable(point, unseen) &&
         !uc_is_property_bidi_control(point) && point != byte_order_mark;
}

}  // namespace

bool is_utf8(std::string_view text) {
  return u8_check(bytes_of(text), text.size()) == nullptr;
}

std::string_view first_character(std::string_view text) {
  return text.substr(0, std::max<std::size_t>(character_at(text).length, 1));
}

uint32_t code_point(std::string_view character) {
  return character_at(character).point;
}

int columns_of(std::string_view character) {
  const Character at = character_at(character);
  return at.length > 0 ? uc_width(at.point, "UTF-8") : -1;
}

std::string_view whole_characters(std::string_view text, std::size_t bytes) {
  std::size_t end = std::min(bytes, text.size());
  const auto is_inside = [&](std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  for (int i = 0; i < 3 && end > 0 && is_inside(end); ++i) --end;
  return text.substr(0, end);
}

std::size_t last_line_break(std::string_view text, std::size_t most) {
  // Whether a line may break depends on the character behind the place, too.
  text = whole_characters(text, most + longest_character);
  std::vector<char> breaks(text.size());
  u8_possible_linebreaks(bytes_of(text), text.size(), "UTF-8", breaks.data());
  std::size_t at = std::min(most, text.size());
  while (at > 0 && (at == text.size() || breaks[at] != UC_BREAK_POSSIBLE)) --at;
  return at;
}

bool has_controls(std::string_view text) {
  return !is_utf8(text) || escape(text, [](std::string_view character) {
                             return !uc_is_cntrl(code_point(character));
                           }) != text;
}

std::string escape(std::string_view text,
                   const std::function<bool(std::string_view character)> &is_accepted) {
  std::string out;
  while (!text.empty()) {
    const std::string_view character = first_character(text);
    if (is_accepted(character)) {
      out += character;
    } else {
      for (const char byte : character) out += fmt::format("\\x{:02x}", uint8_t(byte));
    }
    text.remove_prefix(character.size());
  }
  return out;
}

std::string printable(std::string_view text) {
  return escape(text, is_printable);
}

std::string printable_lines(std::string_view text) {
  return escape(text, [](std::string_view character) {
    return character == "\n" || is_printable(character);
  });
}

std::string visible(std::string_view text) {
  const std::string out = escape(text, [](std::string_view character) {
    const uint32_t point = code_point(character);
    return !uc_is_property_default_ignorable_code_point(point) &&
           (!uc_is_property_white_space(point) || point == ' ');
  });
  const bool is_seen = out == text && !text.starts_with(' ') && !text.ends_with(' ');
  return is_seen ? out : '"' + out + '"';
}

std::string place_in_text(std::string_view text, std::size_t at) {
  const std::string_view before = text.substr(0, at);
  const std::string_view line = before.substr(before.rfind('\n') + 1);  // the only one: npos + 1
  const auto starts_character = [](char c) { return (c & 0xC0) != 0x80; };
  return fmt::format("line {}, column {}", 1 + std::count(before.begin(), before.end(), '\n'),
                     1 + std::count_if(line.begin(), line.end(), starts_character));
}

}  // namespace lab
