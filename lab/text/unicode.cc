#include "text/unicode.h"

#include <unictype.h>
#include <unilbrk.h>
#include <unistr.h>
#include <uniwidth.h>

#include <algorithm>
#include <vector>

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

bool is_printable(const Character &character) {
  constexpr uint32_t unseen = UC_CATEGORY_MASK_Cc | UC_CATEGORY_MASK_Zl | UC_CATEGORY_MASK_Zp;
  return character.length > 0 && !uc_is_general_category_withtable(character.point, unseen) &&
         !uc_is_property_bidi_control(character.point) && character.point != byte_order_mark;
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
  while (!text.empty()) {
    const Character character = character_at(text);
    if (character.length == 0 || uc_is_cntrl(character.point)) return true;
    text.remove_prefix(character.length);
  }
  return false;
}

std::string escaped_bytes(std::string_view bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string out;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    out += {'\\', 'x', digits[value >> 4], digits[value & 15]};
  }
  return out;
}

std::string printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view character = first_character(text);
    if (is_printable(character_at(text))) {
      out += character;
    } else {
      out += escaped_bytes(character);
    }
    text.remove_prefix(character.size());
  }
  return out;
}

std::string printable_lines(std::string_view text) {
  std::string out;
  while (true) {
    const std::size_t end = text.find('\n');
    out += printable(text.substr(0, end));
    if (end == text.npos) return out;
    out += '\n';
    text.remove_prefix(end + 1);
  }
}

}  // namespace lab
