// Parses and prints text, numbers and bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab {

using Bytes = std::vector<uint8_t>;

// Normalizes a name: "EDGE_TRUNK_PORT" and "Edge Trunk Port" become "edge-trunk-port".
std::string key_of(std::string_view name);

// --- numbers and bytes ---

// Parses a decimal number, or a hexadecimal one after 0x.
std::optional<uint32_t> parse_number(std::string_view text);

std::string hex(const Bytes &bytes);
Bytes unhex(std::string_view text);  // an even number of hexadecimal digits

std::string port_text(uint32_t if_index);  // "0x1000"

// Returns the SHA-256 hash of a text in Base64.
std::string hash_text(std::string_view text);

// --- ranges of numbers ---

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

enum class RangeError { none, not_a_list, reversed, out_of_range };

struct ParsedRanges {
  Ranges ranges;  // in the order of the text; empty with a fault
  RangeError fault = RangeError::none;
};

// Parses "1-10,20" or "0x1000-0x1003,0x2000", with numbers up to `max`. Skips blanks.
ParsedRanges parse_ranges(std::string_view text, uint32_t max);

// --- untrusted text ---

std::string_view without_byte_order_mark(std::string_view text);

// Returns true if the text has control characters or is not UTF-8.
bool has_controls(std::string_view text);

// Replaces each byte of the characters that are not accepted by an escape such as "\x1b".
std::string escape(std::string_view text,
                   const std::function<bool(std::string_view character)> &is_accepted);

// Makes a text safe for terminals and JSON readers: escapes invalid UTF-8, control characters, line
// separators, and characters that change the writing direction.
std::string printable(std::string_view text);
std::string printable_lines(std::string_view text);  // the same, but keeps line feeds

// Returns the text in quotation marks, with invisible characters escaped, if it begins or ends with
// a blank or has other white space or invisible characters; otherwise the text itself.
std::string visible(std::string_view text);

// Truncates a text to so many bytes, and appends "..." if it was longer.
std::string cut(std::string_view text, std::size_t max);

// Returns a printable line of an event history without its line feed.
std::string log_line(std::string_view text);

// --- UTF-8 ---

bool is_utf8(std::string_view text);

// Returns the first character of a text that is not empty; its first byte if that is not UTF-8.
std::string_view first_character(std::string_view text);

// Returns U+FFFD for a byte that is not UTF-8.
uint32_t code_point(std::string_view character);

// Returns the width of a character on a terminal, -1 if it cannot be printed.
int columns_of(std::string_view character);

// Returns the longest prefix of at most `bytes` bytes that does not split a character.
std::string_view whole_characters(std::string_view text, std::size_t bytes);

// Returns the last position, at most `max` bytes, where a line of this text may break; 0 if none.
std::size_t last_line_break(std::string_view text, std::size_t max);

// Returns "line 3, column 1" for the byte at a position.
std::string place_in_text(std::string_view text, std::size_t at);

// --- lists ---

// Splits "a,b," into three parts, the last of them empty; "" into one.
std::vector<std::string_view> split(std::string_view text, char separator);
std::string join(const std::vector<std::string> &parts, std::string_view separator = ", ");

// A line of tab-separated fields.
struct TabbedLine {
  int number;  // from 1
  std::vector<std::string_view> fields;
};

// Skips empty lines and lines that begin with #.
std::vector<TabbedLine> read_tabbed(std::string_view text);

template <class Items, class Describe>
std::vector<std::string> describe_each(const Items &items, Describe describe) {
  std::vector<std::string> texts;
  for (const auto &item : items) texts.push_back(describe(item));
  return texts;
}

// Returns "a, b and c", or "a, b or c" for one_of().
std::string listed(const std::vector<std::string> &names, const char *before_last = " and ");
std::string one_of(const std::vector<std::string> &names);

// The same for an unknown name `found`: the most similar name comes first. A long list is
// shortened to that name and the number of the others.
std::string one_of(const std::vector<std::string> &names, std::string_view found);

// Returns a pointer to the first match, or nullptr.
template <class Items, class Match>
auto find_in(const Items &all, Match match) {
  const auto found = std::find_if(std::begin(all), std::end(all), match);
  return found != std::end(all) ? &*found : nullptr;
}

// Orders names by the numbers in them: PortChannel2 before PortChannel10.
bool natural_less(std::string_view a, std::string_view b);

}  // namespace lab
