// Text, numbers and bytes as people write and read them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/unicode.h"

namespace lab {

using Bytes = std::vector<uint8_t>;

// "STP_MODE", "Edge Trunk Port" and "edge-trunk-port" in one spelling, the last.
std::string key_of(std::string_view name);

// --- numbers and bytes ---

// Decimal, or hexadecimal behind 0x; nothing for anything else.
std::optional<uint32_t> parse_number(std::string_view text);

std::string hex(const Bytes &bytes);
Bytes unhex(std::string_view text);  // an even number of hexadecimal digits

// "0x1000".
std::string port_text(uint32_t if_index);

// --- text from outside ---

// A file's text without the mark that some editors put before it.
std::string_view without_byte_order_mark(std::string_view text);

// A text without what is past so many bytes; "..." stands for it.
std::string cut(std::string_view text, std::size_t most);

// A line of an event history, without its line feed.
std::string log_line(std::string_view text);

// --- lists ---

// "a,b," has three parts, the last of them empty; "" has one.
std::vector<std::string_view> split(std::string_view text, char separator);
std::string join(const std::vector<std::string> &parts, std::string_view separator = ", ");

// "a, b and c"; "a, b or c".
std::string listed(const std::vector<std::string> &names, const char *before_last = " and ");
std::string one_of(const std::vector<std::string> &names);

// The same, where `given` was found instead: what is most like it comes first, and of many names
// only that one is printed, and how many others there are.
std::string one_of(const std::vector<std::string> &names, std::string_view given);

// The first that matches; null when there is none.
template <class Item, class Match>
const Item *find_in(const std::vector<Item> &all, Match match) {
  const auto found = std::find_if(all.begin(), all.end(), match);
  return found != all.end() ? &*found : nullptr;
}

// In the order that people expect of names with numbers: PortChannel2 before PortChannel10.
bool natural_less(std::string_view a, std::string_view b);

}  // namespace lab
