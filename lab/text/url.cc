#include "text/url.h"

#include <fmt/core.h>

#include <algorithm>

#include "text/text.h"

namespace lab {
namespace {

bool is_plain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~';
}

}  // namespace

std::string encode_url(std::string_view text) {
  std::string out;
  for (const char c : text)
    out += is_plain(c) ? std::string(1, c) : fmt::format("%{:02X}", uint8_t(c));
  return out;
}

std::string decode_url(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string digits(text.substr(i + 1, text[i] == '%' ? 2 : 0));
    const auto byte = digits.size() == 2 ? parse_number("0x" + digits) : std::nullopt;
    out += byte ? char(*byte) : text[i];
    if (byte) i += 2;
  }
  return out;
}

std::string decode_form(std::string_view text) {
  std::string blanks(text);
  std::replace(blanks.begin(), blanks.end(), '+', ' ');
  return decode_url(blanks);
}

}  // namespace lab
