#include "text/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <numeric>

namespace lab {
namespace {

// Of more names than these, only the nearest is told.
constexpr std::size_t names_told = 9;

// The code point of a character of UTF-8.
uint32_t code_point(std::string_view character) {
  constexpr unsigned lead_bits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  uint32_t point = static_cast<unsigned char>(character[0]) & lead_bits[character.size()];
  for (const char byte : character.substr(1)) {
    point = point << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  }
  return point;
}

// Controls, line and paragraph separators, and the marks that turn the direction of writing.
bool controls(uint32_t point) {
  return point < 0x20 || (point >= 0x7F && point < 0xA0) || point == 0x061C || point == 0x200E ||
         point == 0x200F || (point >= 0x2028 && point <= 0x202E) ||
         (point >= 0x2066 && point <= 0x2069) || point == 0xFEFF;
}

// How many letters must be changed, added, left out or swapped with the next.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> last(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::vector<std::size_t> now(b.size() + 1, i);
    for (std::size_t k = 1; k <= b.size(); ++k) {
      now[k] =
          std::min({last[k] + 1, now[k - 1] + 1, last[k - 1] + (a[i - 1] != b[k - 1] ? 1 : 0)});
      if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1]) {
        now[k] = std::min(now[k], before[k - 2] + 1);
      }
    }
    before = std::move(last);
    last = std::move(now);
  }
  return last.back();
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
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const uint8_t byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

Bytes unhex(std::string_view text) {
  const auto digit = [](char c) {
    return unsigned(c <= '9' ? c - '0' : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
  };
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(uint8_t(digit(text[i]) << 4 | digit(text[i + 1])));
  }
  return bytes;
}

std::string port_text(uint32_t if_index) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", if_index);
  return text;
}

std::size_t character_bytes(std::string_view text) {
  if (text.empty()) return 0;
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (length == 0 || length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates, and what is past the last code point.
  const uint32_t point = code_point(text.substr(0, length));
  constexpr uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_one = point >= least[length] && !(point >= 0xD800 && point < 0xE000);
  return is_one && point <= 0x10FFFF ? length : 0;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = character_bytes(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = character_bytes(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length > 0 && !controls(code_point(character))) {
      out += character;
    } else {
      for (const char byte : character) out += "\\x" + hex({static_cast<uint8_t>(byte)});
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

std::string cut(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  std::size_t end = most;
  while (end > 0 && end + 4 > most && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "...";
}

std::string log_line(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  return printable(text);
}

std::string listed(const std::vector<std::string> &names, const char *before_last) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? before_last : ", ";
    text += names[i];
  }
  return text;
}

std::string one_of(const std::vector<std::string> &names) {
  return listed(names, " or ");
}

std::string one_of(const std::vector<std::string> &names, std::string_view given) {
  std::vector<std::string> ordered = names;
  const std::string key = key_of(given.substr(0, 64));
  const auto unlike = [&key](const std::string &name) { return distance(key_of(name), key); };
  const auto nearest = std::min_element(
      ordered.begin(), ordered.end(),
      [&](const std::string &a, const std::string &b) { return unlike(a) < unlike(b); });
  const bool is_near = nearest != ordered.end() && unlike(*nearest) * 2 <= nearest->size();
  if (is_near) std::rotate(ordered.begin(), nearest, nearest + 1);
  if (ordered.size() <= names_told) return one_of(ordered);
  ordered.resize(is_near ? 1 : 4);
  return one_of(ordered) + ", or one of " + std::to_string(names.size() - ordered.size()) + " more";
}

bool natural_less(std::string_view a, std::string_view b) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  std::size_t i = 0;
  std::size_t k = 0;
  while (i < a.size() && k < b.size()) {
    if (is_digit(a[i]) && is_digit(b[k])) {
      const auto number = [&](std::string_view text, std::size_t &at) {
        while (at < text.size() && text[at] == '0') ++at;
        const std::size_t start = at;
        while (at < text.size() && is_digit(text[at])) ++at;
        return text.substr(start, at - start);
      };
      const std::string_view left = number(a, i);
      const std::string_view right = number(b, k);
      if (left.size() != right.size()) return left.size() < right.size();
      if (left != right) return left < right;
    } else if (a[i] != b[k]) {
      return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[k]);
    } else {
      ++i;
      ++k;
    }
  }
  if (a.size() - i != b.size() - k) return a.size() - i < b.size() - k;
  return a < b;  // the same but for leading zeros
}

}  // namespace lab
