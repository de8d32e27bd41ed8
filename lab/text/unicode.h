// Characters of UTF-8: what is one, how wide it is, what a terminal must not see.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lab {

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

// Has the text control characters, or bytes that are not UTF-8?
bool has_controls(std::string_view text);

// A byte or a character as "\x1b".
std::string escaped_bytes(std::string_view bytes);

// Text that any terminal and any JSON reader takes: what is not UTF-8, control characters, line
// separators, and what turns the direction of writing are escaped.
std::string printable(std::string_view text);
std::string printable_lines(std::string_view text);  // line feeds stay

// The same text where all of it can be seen; else in quotation marks, with what cannot be seen
// escaped: blanks at the ends, other white space, and characters without a shape.
std::string visible(std::string_view text);

}  // namespace lab
