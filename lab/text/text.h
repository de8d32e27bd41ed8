// Text, numbers and bytes as people write and read them.
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

// "STP_MODE", "Edge Trunk Port" and "edge-trunk-port" in one spelling, the last.
std::string key_of(std::string_view name);

// --- numbers and bytes ---

// Decimal, or hexadecimal behind 0x; nothing for anything else.
std::optional<uint32_t> parse_number(std::string_view text);

std::string hex(const Bytes &bytes);
Bytes unhex(std::string_view text);  // an even number of hexadecimal digits

// "0x1000".
std::string port_text(uint32_t if_index);

// The SHA-256 hash of a text, in Base64.
std::string hash_text(std::string_view text);

// --- ranges of numbers ---

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// What is wrong with a text that should be a list of ranges.
enum class RangeFault { none, no_list, reversed, too_great };

struct ParsedRanges {
  Ranges ranges;  // in the order of the text; of no use with a fault
  RangeFault fault = RangeFault::none;
};

// "1-10,20" or "0x1000-0x1003,0x2000", numbers up to `most`; blanks are skipped.
ParsedRanges parse_ranges(std::string_view text, uint32_t most);

// --- text from outside ---

// A file's text without the mark that some editors put before it.
std::string_view without_byte_order_mark(std::string_view text);

// Has the text control characters, or bytes that are not UTF-8?
bool has_controls(std::string_view text);

// A text in which each character that is not accepted stands as "\x1b", byte by byte.
std::string escape(std::string_view text,
                   const std::function<bool(std::string_view character)> &is_accepted);

// Text that any terminal and any JSON reader takes: what is not UTF-8, control characters, line
// separators, and what turns the direction of writing are escaped.
std::string printable(std::string_view text);
std::string printable_lines(std::string_view text);  // line feeds stay

// The same text where all of it can be seen; else in quotation marks, with what cannot be seen
// escaped: blanks at the ends, other white space, and characters without a shape.
std::string visible(std::string_view text);

// A text without what is past so many bytes; "..." stands for it.
std::string cut(std::string_view text, std::size_t most);

// A line of an event history, without its line feed.
std::string log_line(std::string_view text);

// --- characters of UTF-8 ---

bool is_utf8(std::string_view text);

// The character that a text begins with; its first byte where that is not UTF-8. The text is not
// empty.
std::string_view first_character(std::string_view text);

// U+FFFD for a byte that is not UTF-8.
uint32_t code_point(std::string_view character);

// The columns of a character on a terminal; less than 0: it cannot be shown.
int columns_of(std::string_view character);

// The longest beginning of a text that ends between two characters and fits into some bytes.
std::string_view whole_characters(std::string_view text, std::size_t bytes);

// Where a line may end: the greatest number of bytes, more than 0 and at most `most`, after which a
// line of this text may break; 0: there is none.
std::size_t last_line_break(std::string_view text, std::size_t most);

// "line 3, column 1".
std::string place_in_text(std::string_view text, std::size_t at);

// --- lists ---

// "a,b," has three parts, the last of them empty; "" has one.
std::vector<std::string_view> split(std::string_view text, char separator);
std::string join(const std::vector<std::string> &parts, std::string_view separator = ", ");

// A line of fields that tabs separate.
struct TabbedLine {
  int number;  // from 1
  std::vector<std::string_view> fields;
};

// Lines that are empty or begin with # are passed over.
std::vector<TabbedLine> read_tabbed(std::string_view text);

// A text for each item.
template <class Items, class Describe>
std::vector<std::string> describe_each(const Items &items, Describe describe) {
  std::vector<std::string> texts;
  for (const auto &item : items) texts.push_back(describe(item));
  return texts;
}

// "a, b and c"; "a, b or c".
std::string listed(const std::vector<std::string> &names, const char *before_last = " and ");
std::string one_of(const std::vector<std::string> &names);

// The same, where `given` was found instead: what is most like it comes first, and of many names
// only that one is printed, and how many others there are.
std::string one_of(const std::vector<std::string> &names, std::string_view given);

// The first that matches; null when there is none.
template <class Items, class Match>
auto find_in(const Items &all, Match match) {
  const auto found = std::find_if(std::begin(all), std::end(all), match);
  return found != std::end(all) ? &*found : nullptr;
}

// In the order that people expect of names with numbers: PortChannel2 before PortChannel10.
bool natural_less(std::string_view a, std::string_view b);

}  // namespace lab
