#include "text/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <numeric>

namespace lab {
namespace {

// Of more names than these, only the nearest is printed.
constexpr std::size_t names_told = 9;

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

std::string cut(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  return std::string(whole_characters(text, most)) + "...";
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
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

std::string listed(const std::vector<std::string> &names, const char *before_last) {
  if (names.size() < 2) return join(names);
  return join({names.begin(), names.end() - 1}) + before_last + names.back();
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
