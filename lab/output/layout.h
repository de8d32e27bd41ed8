// Terminal output: width, wrapping, colors, tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

struct Layout {
  bool color = false;
  std::size_t width = 80;  // columns, at least 40
};

// The layout of standard output, from its terminal and the environment. `color`: "auto", "always"
// or "never".
Layout standard_layout(const std::string &color);

enum class Color { none, red, green, yellow, bold };

// A text and its color.
struct Cell {
  Cell(std::string cell_text, Color cell_color = Color::none)
      : text(std::move(cell_text)), color(cell_color) {}
  Cell(const char *cell_text, Color cell_color = Color::none)
      : text(cell_text), color(cell_color) {}

  std::string text;
  Color color;
};

std::string add_color(const Cell &cell, const Layout &layout);

bool is_utf8_locale();

// Escapes the characters that this locale cannot display.
std::string escape_for_locale(std::string_view text);

// Wraps text after blanks and commas. Cuts words that are wider than the width. Keeps line feeds.
std::string wrap_text(const std::string &text, std::size_t width);

// --- printing: these functions escape their texts for the locale ---

// Prints an indented line without wrapping it.
void put_line(const std::string &text, std::size_t indent = 0);

// Prints indented lines and wraps them. A heading of at most the indent replaces the first indent.
void put_wrapped(const Cell &text, const Layout &layout, std::size_t indent = 0,
                 const std::string &heading = "");

// Prints a table. Cells wider than their share of the terminal span several lines.
void put_table(const std::vector<Cell> &heading, const std::vector<std::vector<Cell>> &rows,
               const Layout &layout);

// Flushes standard output. Returns false if something could not be written; `why` is then the
// reason, unless it is set already.
bool flush_stdout(std::string &why);

}  // namespace lab
