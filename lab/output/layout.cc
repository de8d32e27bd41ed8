#include "output/layout.h"

#include <fmt/color.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <numeric>

#include "text/text.h"

namespace lab {
namespace {

constexpr std::size_t min_terminal_width = 40;
constexpr std::size_t min_column_width = 8;
constexpr std::size_t table_margin = 4;
constexpr std::size_t column_gap = 2;

using Lines = std::vector<std::string>;

// The columns of a character in this locale; negative if the locale cannot display it.
int locale_columns(std::string_view character) {
  if (character.size() == 1) return 1;
  return is_utf8_locale() ? columns_of(character) : -1;
}

struct Extent {
  std::size_t bytes = 0;
  std::size_t columns = 0;
};

// Measures the longest prefix of a text that fits into `most` columns, at least one character.
Extent measure(std::string_view text, std::size_t most = SIZE_MAX) {
  Extent extent;
  while (extent.bytes < text.size()) {
    const std::string_view rest = text.substr(extent.bytes);
    if (rest[0] == '\033') {  // a color code, which has no width
      extent.bytes += std::min(rest.find('m'), rest.size() - 1) + 1;
      continue;
    }
    const std::string_view character = first_character(rest);
    const std::size_t columns =
        extent.columns + std::size_t(std::max(locale_columns(character), 0));
    if (columns > most && extent.bytes > 0) break;
    extent = {extent.bytes + character.size(), columns};
  }
  return extent;
}

std::size_t width_of(std::string_view text) {
  return measure(text).columns;
}

// The width of the longest word, which a text needs to wrap without cutting words.
std::size_t min_width(std::string_view text) {
  std::size_t longest = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" ,"), text.size() - 1) + 1;
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    longest = std::max(longest, width_of(word) - (word.back() == ' ' ? 1 : 0));
  }
  return longest;
}

// Finds the end of the next line: after a blank or a comma, else at a line break that the script
// allows, as after a hyphen, else at the width.
std::size_t find_line_end(std::string_view text, std::size_t width) {
  const std::size_t fits = measure(text, width).bytes;
  // A blank is removed later, so it may follow the last column.
  std::size_t cut = text.substr(0, fits).find_last_of(" ,");
  if (fits < text.size() && text[fits] == ' ') cut = fits;
  if (cut != text.npos && cut != 0) return cut + 1;
  const std::size_t end = last_line_break(text, fits);
  return end > 0 ? end : fits;
}

Lines wrap(const std::string &text, std::size_t width) {
  Lines lines;
  for (std::string_view rest : split(text, '\n')) {
    while (width_of(rest) > width) {
      std::string_view line = rest.substr(0, find_line_end(rest, width));
      rest.remove_prefix(line.size());
      while (line.ends_with(' ')) line.remove_suffix(1);
      lines.emplace_back(line);
    }
    lines.emplace_back(rest);
  }
  return lines;
}

// Narrows the widest columns first until they fit into the room or have their minimum widths.
void narrow_columns(std::vector<std::size_t> &widths, const std::vector<std::size_t> &least,
                    std::size_t room) {
  std::size_t total = std::accumulate(widths.begin(), widths.end(), std::size_t{0});
  const auto shrinkable = [&](std::size_t i) { return widths[i] > least[i] ? widths[i] : 0; };
  for (; total > room; --total) {
    std::size_t widest = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (shrinkable(i) > shrinkable(widest)) widest = i;
    }
    if (shrinkable(widest) == 0) return;
    --widths[widest];
  }
}

// Computes the widths of columns. Words are cut only if the table does not fit otherwise. The first
// row is the heading.
std::vector<std::size_t> find_column_widths(const std::vector<std::vector<Cell>> &rows,
                                            std::size_t room) {
  std::vector<std::size_t> titles;
  for (const Cell &title : rows[0]) titles.push_back(width_of(title.text));
  std::vector<std::size_t> widths = titles;
  std::vector<std::size_t> least = titles;
  for (auto row = rows.begin() + 1; row != rows.end(); ++row) {
    for (std::size_t i = 0; i < titles.size(); ++i) {
      widths[i] = std::max(widths[i], width_of((*row)[i].text));
      least[i] = std::max(least[i], min_width((*row)[i].text));
    }
  }
  room -= column_gap * (titles.size() - 1);
  narrow_columns(widths, least, room);
  for (std::size_t &title : titles) title = std::max(title, min_column_width);
  narrow_columns(widths, titles, room);
  return widths;
}

// Formats a row of a table: the lines of its cells side by side.
std::string format_row(const std::vector<Cell> &cells, const std::vector<Lines> &lines,
                       const std::vector<std::size_t> &widths, const Layout &layout) {
  std::string out;
  const std::size_t height = std::ranges::max(lines, {}, &Lines::size).size();
  for (std::size_t k = 0; k < height; ++k) {
    std::size_t blanks = table_margin;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string text = k < lines[i].size() ? lines[i][k] : "";
      if (!text.empty()) {
        out.append(blanks, ' ').append(add_color({text, cells[i].color}, layout));
        blanks = 0;
      }
      blanks += widths[i] - width_of(text) + column_gap;
    }
    out += '\n';
  }
  return out;
}

}  // namespace

bool is_utf8_locale() {
  static const bool is_utf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  return is_utf8;
}

Layout standard_layout(const std::string &color) {
  const auto variable = [](const char *name) {
    const char *value = std::getenv(name);
    return std::string(value != nullptr ? value : "");
  };
  Layout layout;
  layout.color = color == "always" || (color == "auto" && isatty(STDOUT_FILENO) == 1 &&
                                       variable("NO_COLOR").empty() && variable("TERM") != "dumb");
  winsize size{};
  if (const auto width = parse_number(variable("COLUMNS"))) {
    layout.width = std::clamp<std::size_t>(*width, min_terminal_width, 1000);
  } else if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= min_terminal_width) {
    layout.width = size.ws_col;
  }
  return layout;
}

std::string add_color(const Cell &cell, const Layout &layout) {
  if (!layout.color || cell.color == Color::none) return cell.text;
  const fmt::text_style styles[] = {{},
                                    fmt::fg(fmt::terminal_color::red),
                                    fmt::fg(fmt::terminal_color::green),
                                    fmt::fg(fmt::terminal_color::yellow),
                                    fmt::emphasis::bold};
  return fmt::format(styles[std::size_t(cell.color)], "{}", cell.text);
}

std::string escape_for_locale(std::string_view text) {
  return escape(text, [](std::string_view character) { return locale_columns(character) >= 0; });
}

std::string wrap_text(const std::string &text, std::size_t width) {
  return join(wrap(text, width), "\n");
}

void put_line(const std::string &text, std::size_t indent) {
  fmt::print("{:{}}{}\n", "", indent, escape_for_locale(text));
}

void put_wrapped(const Cell &text, const Layout &layout, std::size_t indent,
                 const std::string &heading) {
  std::string before = escape_for_locale(heading);
  before.resize(indent, ' ');
  for (const std::string &line :
       wrap(escape_for_locale(add_color(text, layout)), layout.width - indent)) {
    if (line.empty()) before.erase(before.find_last_not_of(' ') + 1);
    fmt::print("{}{}\n", before, line);
    before.assign(indent, ' ');
  }
}

void put_table(const std::vector<Cell> &heading, const std::vector<std::vector<Cell>> &rows,
               const Layout &layout) {
  std::vector<std::vector<Cell>> cells = rows;
  cells.insert(cells.begin(), heading);
  for (auto &row : cells) {
    for (Cell &cell : row) cell.text = escape_for_locale(cell.text);
  }
  const std::vector<std::size_t> most = find_column_widths(cells, layout.width - table_margin);
  // Wrapped columns can be narrower than their share.
  std::vector<std::size_t> widths(heading.size());
  std::vector<std::vector<Lines>> lines;
  for (const auto &row : cells) {
    auto &row_lines = lines.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      row_lines.push_back(wrap(row[i].text, most[i]));
      for (const std::string &line : row_lines[i]) widths[i] = std::max(widths[i], width_of(line));
    }
  }
  std::string out;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    out += format_row(cells[k], lines[k], widths, layout);
  }
  fmt::print("{}", out);
}

bool flush_stdout(std::string &why) {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
  if (why.empty()) why = errno != 0 ? std::strerror(errno) : "an earlier write failed";
  return false;
}

}  // namespace lab
