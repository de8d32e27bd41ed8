// How text gets to a person: the width of the terminal, wrapping, colours, tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

struct Layout {
  bool colour = false;
  std::size_t width = 80;  // columns
};

// Of the standard output, by its terminal, its locale and the environment. `color`: "auto",
// "always" or "never".
Layout standard_layout(const std::string &color);

enum class Colour { none, red, green, yellow, bold };

// A text in a colour.
struct Cell {
  Cell(std::string of_text, Colour of_colour = Colour::none)
      : text(std::move(of_text)), colour(of_colour) {}
  Cell(const char *of_text, Colour of_colour = Colour::none) : text(of_text), colour(of_colour) {}

  std::string text;
  Colour colour;
};

std::string coloured(const Cell &cell, const Layout &layout);

// Does this locale take more than ASCII?
bool takes_utf8();

// A text as this locale can show it: what it has no letters for is escaped.
std::string as_shown(std::string_view text);

// Text wrapped at blanks and commas; a word wider than the width is cut where it must be, and goes
// on in the next line. Lines of the text stay lines.
std::string wrapped(const std::string &text, std::size_t width);

// --- printing: everything that a person reads goes through these ---

// A line behind some blanks, as wide as it is.
void put_line(const std::string &text, std::size_t indent = 0);

// Lines wrapped behind some blanks; the first may have a heading in their place.
void put_wrapped(const Cell &text, const Layout &layout, std::size_t indent = 0,
                 const std::string &heading = "");

// Rows under a heading; a text that is wider than its share of the terminal goes on in the next
// line.
void put_table(const std::vector<Cell> &heading, const std::vector<std::vector<Cell>> &rows,
               const Layout &layout);

// Is all that was printed written? When not, `why` says what is in the way, unless it does so
// already.
bool all_written(std::string &why);

}  // namespace lab
