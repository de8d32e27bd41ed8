#include "text/text.h"

#include <fmt/format.h>
#include <nettle/base64.h>
#include <nettle/sha2.h>
#include <unictype.h>
#include <unilbrk.h>
#include <unistr.h>
#include <uniwidth.h>

#include <array>
#include <cctype>
#include <charconv>

namespace lab {
namespace {

// A longer list of names is shortened.
constexpr std::size_t max_names = 9;

// Returns the edit distance: substitutions, insertions, deletions and swaps of adjacent characters.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector all(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t k = 0; k <= b.size(); ++k) {
      if (i == 0 || k == 0) {
        all[i][k] = i + k;
        continue;
      }
      all[i][k] = std::min({all[i - 1][k] + 1, all[i][k - 1] + 1,
                            all[i - 1][k - 1] + (a[i - 1] != b[k - 1] ? 1 : 0)});
      if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1]) {
        all[i][k] = std::min(all[i][k], all[i - 2][k - 2] + 1);
      }
    }
  }
  return all.back().back();
}

// Removes the number at the start of a text and returns it without leading zeros.
std::string_view take_number(std::string_view &text) {
  const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
  text.remove_prefix(digits.size());
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

// --- UTF-8 ---

constexpr std::size_t longest_character = 4;
constexpr ucs4_t byte_order_mark = 0xFEFF;
constexpr ucs4_t replacement = 0xFFFD;

const uint8_t *bytes_of(std::string_view text) {
  return reinterpret_cast<const uint8_t *>(text.data());
}

struct Character {
  ucs4_t point;
  std::size_t length;  // 0 if invalid
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

std::string_view without_byte_order_mark(std::string_view text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (text.starts_with(mark)) text.remove_prefix(mark.size());
  return text;
}

std::string key_of(std::string_view name) {
  std::string key(name);
  for (char &c : key) {
    c = c == '_' || c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return key;
}

std::optional<uint32_t> parse_number(std::string_view text) {
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  if (is_hex) text.remove_prefix(2);
  uint32_t value = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value, is_hex ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

std::string hex(const Bytes &bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, ""));
}

Bytes unhex(std::string_view text) {
  Bytes bytes(text.size() / 2);
  const char *at = text.data();
  for (uint8_t &byte : bytes) {
    std::from_chars(at, at + 2, byte, 16);
    at += 2;
  }
  return bytes;
}

std::string port_text(uint32_t if_index) {
  return fmt::format("{:#x}", if_index);
}

std::string hash_text(std::string_view text) {
  std::array<uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t *>(text.data()));
  sha256_digest(&context, digest.size(), digest.data());
  std::string encoded(BASE64_ENCODE_RAW_LENGTH(digest.size()), '\0');
  base64_encode_raw(encoded.data(), digest.size(), digest.data());
  return encoded;
}

ParsedRanges parse_ranges(std::string_view text, uint32_t max) {
  ParsedRanges parsed;
  std::string rest(text);
  std::erase(rest, ' ');
  for (const std::string_view part : split(rest, ',')) {
    const std::size_t dash = part.find('-');
    const auto first = parse_number(part.substr(0, dash));
    const auto last = dash == part.npos ? first : parse_number(part.substr(dash + 1));
    if (!first || !last) return {{}, RangeError::not_a_list};
    if (*first > max || *last > max) return {{}, RangeError::out_of_range};
    if (*first > *last) return {{}, RangeError::reversed};
    parsed.ranges.emplace_back(*first, *last);
  }
  return parsed;
}

std::string cut(std::string_view text, std::size_t max) {
  if (text.size() <= max) return std::string(text);
  return std::string(whole_characters(text, max)) + "...";
}

std::string log_line(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  return printable(text);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == text.npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::string join(const std::vector<std::string> &parts, std::string_view separator) {
  return fmt::format("{}", fmt::join(parts, separator));
}

std::string listed(const std::vector<std::string> &names, const char *before_last) {
  if (names.size() < 2) return join(names);
  return join({names.begin(), names.end() - 1}) + before_last + names.back();
}

std::string one_of(const std::vector<std::string> &names) {
  return listed(names, " or ");
}

std::string one_of(const std::vector<std::string> &names, std::string_view found) {
  std::vector<std::string> ordered = names;
  const std::string key = key_of(found.substr(0, 64));
  const auto distance_to = [&key](const std::string &name) { return distance(key_of(name), key); };
  const auto nearest = std::min_element(
      ordered.begin(), ordered.end(),
      [&](const std::string &a, const std::string &b) { return distance_to(a) < distance_to(b); });
  const bool is_near = nearest != ordered.end() && distance_to(*nearest) * 2 <= nearest->size();
  if (is_near) std::rotate(ordered.begin(), nearest, nearest + 1);
  if (ordered.size() <= max_names) return one_of(ordered);
  ordered.resize(is_near ? 1 : 4);
  return one_of(ordered) + ", or one of " + std::to_string(names.size() - ordered.size()) + " more";
}

bool natural_less(std::string_view a, std::string_view b) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  std::string_view left = a;
  std::string_view right = b;
  while (!left.empty() && !right.empty()) {
    if (is_digit(left[0]) && is_digit(right[0])) {
      const std::string_view number = take_number(left);
      const std::string_view other = take_number(right);
      if (number.size() != other.size()) return number.size() < other.size();
      if (number != other) return number < other;
    } else if (left[0] != right[0]) {
      return left < right;
    } else {
      left.remove_prefix(1);
      right.remove_prefix(1);
    }
  }
  if (left.empty() != right.empty()) return left.empty();
  return a < b;  // equal except for leading zeros
}

std::vector<TabbedLine> read_tabbed(std::string_view text) {
  std::vector<TabbedLine> lines;
  int number = 0;
  for (std::string_view line : split(without_byte_order_mark(text), '\n')) {
    ++number;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.empty() && line[0] != '#') lines.push_back({number, split(line, '\t')});
  }
  return lines;
}

// --- UTF-8 ---

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

std::size_t last_line_break(std::string_view text, std::size_t max) {
  // A break also depends on the character after it.
  text = whole_characters(text, max + longest_character);
  std::vector<char> breaks(text.size());
  u8_possible_linebreaks(bytes_of(text), text.size(), "UTF-8", breaks.data());
  std::size_t at = std::min(max, text.size());
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
  const std::string_view line = before.substr(before.rfind('\n') + 1);  // npos + 1 is 0
  const auto starts_character = [](char c) { return (c & 0xC0) != 0x80; };
  return fmt::format("line {}, column {}", 1 + std::count(before.begin(), before.end(), '\n'),
                     1 + std::count_if(line.begin(), line.end(), starts_character));
}

}  // namespace lab
