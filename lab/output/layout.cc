#include "output/layout.h"

#include <fmt/color.h>
#include <fmt/core.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "text/text.h"

namespace lab {
namespace {

constexpr std::size_t least_width_of_terminal = 40;
constexpr std::size_t least_column = 8;
constexpr std::size_t table_margin = 4;
constexpr std::size_t column_gap = 2;

// The columns of a character; less than 0: this locale cannot show it.
int columns_here(std::string_view character) {
  if (character.size() == 1) return 1;
  return takes_utf8() ? columns_of(character) : -1;
}

// What stands at a place of a text that is shown: a character, or a colour, which takes no column.
struct Unit {
  std::size_t bytes;
  std::size_t columns;
};

Unit unit_at(std::string_view text) {
  if (text[0] == '\033') return {std::min(text.find('m'), text.size() - 1) + 1, 0};
  const std::string_view character = first_character(text);
  return {character.size(), static_cast<std::size_t>(std::max(columns_here(character), 0))};
}

// How many bytes of a text fit into some columns; at least one character.
std::size_t bytes_that_fit(std::string_view text, std::size_t columns) {
  std::size_t at = 0;
  while (at < text.size()) {
    const Unit unit = unit_at(text.substr(at));
    if (unit.columns > columns && at > 0) break;
    columns -= std::min(unit.columns, columns);
    at += unit.bytes;
  }
  return at;
}

// The width that a text needs when it is wrapped without cutting a word.
std::size_t least_width(std::string_view text) {
  std::size_t longest = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" ,"), text.size() - 1) + 1;
    std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    if (word.back() == ' ') word.remove_suffix(1);
    longest = std::max(longest, width_of(word));
  }
  return longest;
}

// Where the next line of a text ends: behind a blank or a comma, else where its script allows it,
// as behind a hyphen, else where it must.
std::size_t line_end(std::string_view text, std::size_t width) {
  const std::size_t fits = bytes_that_fit(text, width);
  // A comma stays on its line, a blank goes: it may stand just past the end.
  std::size_t cut = text.substr(0, fits).find_last_of(" ,");
  if (fits < text.size() && text[fits] == ' ') cut = fits;
  if (cut == text.npos || cut == 0) {
    const std::size_t end = last_line_break(text, fits);
    return end > 0 ? end : fits;
  }
  return cut + 1;
}

std::string wrapped_line(std::string_view text, std::size_t width) {
  std::string out;
  while (width_of(text) > width) {
    std::string_view line = text.substr(0, line_end(text, width));
    text.remove_prefix(line.size());
    while (line.ends_with(' ')) line.remove_suffix(1);
    out.append(line).append("\n");
  }
  return out.append(text);
}

// Columns as wide as their widest text; what is too much is taken from the widest first, and words
// are cut only when the table does not fit otherwise.
std::vector<std::size_t> column_widths(const std::vector<std::string> &heading,
                                       const std::vector<std::vector<Cell>> &rows,
                                       std::size_t room) {
  std::vector<std::size_t> widths;
  std::vector<std::size_t> least;
  std::size_t total = column_gap * (heading.size() - 1);
  for (std::size_t i = 0; i < heading.size(); ++i) {
    widths.push_back(width_of(heading[i]));
    least.push_back(widths.back());
    for (const auto &row : rows) {
      widths[i] = std::max(widths[i], width_of(row[i].text));
      least[i] = std::max(least[i], least_width(row[i].text));
    }
    total += widths[i];
  }
  for (const bool cut_words : {false, true}) {
    while (total > room) {
      std::size_t widest = widths.size();
      for (std::size_t i = 0; i < widths.size(); ++i) {
        const std::size_t enough =
            std::max(width_of(heading[i]), cut_words ? least_column : least[i]);
        if (widths[i] <= enough) continue;
        if (widest == widths.size() || widths[i] > widths[widest]) widest = i;
      }
      if (widest == widths.size()) break;
      --widths[widest];
      --total;
    }
  }
  return widths;
}

using Lines = std::vector<std::string_view>;

// Append a line of cells: the line of that number of each cell, padded to the width of its column.
void append_line(std::string &out, const std::vector<Cell> &cells, const std::vector<Lines> &lines,
                 std::size_t number, const std::vector<std::size_t> &widths, const Layout &layout) {
  std::size_t blanks = table_margin;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string_view text = number < lines[i].size() ? lines[i][number] : "";
    if (!text.empty()) {
      out.append(blanks, ' ').append(coloured(std::string(text), cells[i].colour, layout));
      blanks = 0;
    }
    blanks += widths[i] - width_of(text) + column_gap;
  }
  out += '\n';
}

}  // namespace

bool takes_utf8() {
  static const bool takes = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  return takes;
}

Layout standard_layout(const std::string &color) {
  Layout layout;
  const auto is_set = [](const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr && value[0] != '\0';
  };
  const char *terminal = std::getenv("TERM");
  const bool is_dumb = terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
  layout.colour = color == "always" || (color == "auto" && isatty(STDOUT_FILENO) == 1 &&
                                        !is_set("NO_COLOR") && !is_dumb);
  winsize size{};
  const char *columns = std::getenv("COLUMNS");
  if (const auto width = parse_number(columns != nullptr ? columns : "")) {
    layout.width = std::clamp<std::size_t>(*width, least_width_of_terminal, 1000);
  } else if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 &&
             size.ws_col >= least_width_of_terminal) {
    layout.width = size.ws_col;
  }
  return layout;
}

std::string coloured(const std::string &text, Colour colour, const Layout &layout) {
  if (!layout.colour || colour == Colour::none) return text;
  if (colour == Colour::bold) return fmt::format(fmt::emphasis::bold, "{}", text);
  const auto of = colour == Colour::red     ? fmt::terminal_color::red
                  : colour == Colour::green ? fmt::terminal_color::green
                  : colour == Colour::cyan  ? fmt::terminal_color::cyan
                                            : fmt::terminal_color::yellow;
  return fmt::format(fmt::fg(of), "{}", text);
}

std::string as_shown(std::string_view text) {
  return escape(text, [](std::string_view character) { return columns_here(character) >= 0; });
}

std::size_t width_of(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const Unit unit = unit_at(text);
    columns += unit.columns;
    text.remove_prefix(unit.bytes);
  }
  return columns;
}

std::string wrapped(const std::string &text, std::size_t width) {
  std::string out;
  std::string_view rest = text;
  while (true) {
    const std::size_t end = rest.find('\n');
    out += wrapped_line(rest.substr(0, end), width);
    if (end == rest.npos) return out;
    out += '\n';
    rest.remove_prefix(end + 1);
  }
}

void put_line(const std::string &text, std::size_t indent) {
  fmt::print("{:{}}{}\n", "", indent, as_shown(text));
}

void put_wrapped(const std::string &text, const Layout &layout, std::size_t indent,
                 const std::string &heading) {
  const std::size_t room = layout.width > indent ? layout.width - indent : 1;
  const std::string lines = wrapped(as_shown(text), room);
  std::string before = as_shown(heading);
  before.resize(std::max(before.size(), indent), ' ');
  for (std::string_view rest = lines;;) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    if (line.empty()) {
      before.erase(before.find_last_not_of(' ') + 1);
    }
    fmt::print("{}{}\n", before, line);
    if (end == rest.npos) return;
    before.assign(indent, ' ');
    rest.remove_prefix(end + 1);
  }
}

void put_table(const std::vector<std::string> &heading, const std::vector<std::vector<Cell>> &rows,
               const Layout &layout) {
  std::vector<std::vector<Cell>> cells = rows;
  for (auto &row : cells) {
    for (Cell &cell : row) cell.text = as_shown(cell.text);
  }
  const std::size_t room = layout.width > table_margin ? layout.width - table_margin : 1;
  const std::vector<std::size_t> most = column_widths(heading, cells, room);
  std::vector<Cell> titles;
  for (const std::string &title : heading) titles.push_back({title, Colour::none});
  cells.insert(cells.begin(), titles);
  // A column is as wide as its widest line is now.
  std::vector<std::size_t> widths(heading.size());
  std::vector<std::vector<Lines>> lines;
  for (auto &row : cells) {
    std::vector<Lines> of_row;
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i].text = wrapped(row[i].text, most[i]);
      of_row.push_back(split(row[i].text, '\n'));
      for (const std::string_view line : of_row[i]) widths[i] = std::max(widths[i], width_of(line));
    }
    lines.push_back(std::move(of_row));
  }
  std::string out;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    std::size_t count = 0;
    for (const Lines &of_cell : lines[k]) count = std::max(count, of_cell.size());
    for (std::size_t n = 0; n < count; ++n) append_line(out, cells[k], lines[k], n, widths, layout);
  }
  fmt::print("{}", out);
}

bool all_written(std::string &why) {
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  if (flushed && std::ferror(stdout) == 0) return true;
  if (why.empty()) why = errno != 0 ? std::strerror(errno) : "it failed before";
  return false;
}

}  // namespace lab
