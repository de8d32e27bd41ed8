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

constexpr std::size_t least_width_of_terminal = 40;
constexpr std::size_t least_column = 8;
constexpr std::size_t table_margin = 4;
constexpr std::size_t column_gap = 2;

using Lines = std::vector<std::string>;

// The columns of a character; less than 0: this locale cannot show it.
int columns_here(std::string_view character) {
  if (character.size() == 1) return 1;
  return takes_utf8() ? columns_of(character) : -1;
}

struct Extent {
  std::size_t bytes = 0;
  std::size_t columns = 0;
};

// The beginning of a text that fits into some columns, at least one character.
Extent measure(std::string_view text, std::size_t most = SIZE_MAX) {
  Extent extent;
  while (extent.bytes < text.size()) {
    const std::string_view rest = text.substr(extent.bytes);
    if (rest[0] == '\033') {  // a colour, which takes no column
      extent.bytes += std::min(rest.find('m'), rest.size() - 1) + 1;
      continue;
    }
    const std::string_view character = first_character(rest);
    const std::size_t columns = extent.columns + std::size_t(std::max(columns_here(character), 0));
    if (columns > most && extent.bytes > 0) break;
    extent = {extent.bytes + character.size(), columns};
  }
  return extent;
}

std::size_t width_of(std::string_view text) {
  return measure(text).columns;
}

// The width that a text needs when it is wrapped without cutting a word.
std::size_t least_width(std::string_view text) {
  std::size_t longest = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" ,"), text.size() - 1) + 1;
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    longest = std::max(longest, width_of(word) - (word.back() == ' ' ? 1 : 0));
  }
  return longest;
}

// Where the next line of a text ends: behind a blank or a comma, else where its script allows it,
// as behind a hyphen, else where it must.
std::size_t line_end(std::string_view text, std::size_t width) {
  const std::size_t fits = measure(text, width).bytes;
  // A comma stays on its line, a blank goes: it may stand just past the end.
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
      std::string_view line = rest.substr(0, line_end(rest, width));
      rest.remove_prefix(line.size());
      while (line.ends_with(' ')) line.remove_suffix(1);
      lines.emplace_back(line);
    }
    lines.emplace_back(rest);
  }
  return lines;
}

// Takes what does not fit into the room from the widest columns first, down to the least widths.
void narrow(std::vector<std::size_t> &widths, const std::vector<std::size_t> &least,
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

// Columns as wide as their widest text; words are cut only when the table does not fit otherwise.
// The first row is the heading.
std::vector<std::size_t> column_widths(const std::vector<std::vector<Cell>> &rows,
                                       std::size_t room) {
  std::vector<std::size_t> titles;
  for (const Cell &title : rows[0]) titles.push_back(width_of(title.text));
  std::vector<std::size_t> widths = titles;
  std::vector<std::size_t> least = titles;
  for (auto row = rows.begin() + 1; row != rows.end(); ++row) {
    for (std::size_t i = 0; i < titles.size(); ++i) {
      widths[i] = std::max(widths[i], width_of((*row)[i].text));
      least[i] = std::max(least[i], least_width((*row)[i].text));
    }
  }
  const std::size_t gaps = column_gap * (titles.size() - 1);
  room -= std::min(room, gaps);
  narrow(widths, least, room);
  for (std::size_t &title : titles) title = std::max(title, least_column);
  narrow(widths, titles, room);
  return widths;
}

// A row of a table: the lines of its cells side by side, padded to the widths of the columns.
std::string format_row(const std::vector<Cell> &cells, const std::vector<Lines> &lines,
                       const std::vector<std::size_t> &widths, const Layout &layout) {
  std::string out;
  const std::size_t height = std::ranges::max(lines, {}, &Lines::size).size();
  for (std::size_t k = 0; k < height; ++k) {
    std::size_t blanks = table_margin;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string text = k < lines[i].size() ? lines[i][k] : "";
      if (!text.empty()) {
        out.append(blanks, ' ').append(coloured({text, cells[i].colour}, layout));
        blanks = 0;
      }
      blanks += widths[i] - width_of(text) + column_gap;
    }
    out += '\n';
  }
  return out;
}

}  // namespace

bool takes_utf8() {
  static const bool takes = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  return takes;
}

Layout standard_layout(const std::string &color) {
  const auto variable = [](const char *name) {
    const char *value = std::getenv(name);
    return std::string(value != nullptr ? value : "");
  };
  Layout layout;
  layout.colour = color == "always" || (color == "auto" && isatty(STDOUT_FILENO) == 1 &&
                                        variable("NO_COLOR").empty() && variable("TERM") != "dumb");
  winsize size{};
  if (const auto width = parse_number(variable("COLUMNS"))) {
    layout.width = std::clamp<std::size_t>(*width, least_width_of_terminal, 1000);
  } else if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 &&
             size.ws_col >= least_width_of_terminal) {
    layout.width = size.ws_col;
  }
  return layout;
}

std::string coloured(const Cell &cell, const Layout &layout) {
  if (!layout.colour || cell.colour == Colour::none) return cell.text;
  const fmt::text_style styles[] = {{},
                                    fmt::fg(fmt::terminal_color::red),
                                    fmt::fg(fmt::terminal_color::green),
                                    fmt::fg(fmt::terminal_color::yellow),
                                    fmt::emphasis::bold};
  return fmt::format(styles[std::size_t(cell.colour)], "{}", cell.text);
}

std::string as_shown(std::string_view text) {
  return escape(text, [](std::string_view character) { return columns_here(character) >= 0; });
}

std::string wrapped(const std::string &text, std::size_t width) {
  return join(wrap(text, width), "\n");
}

void put_line(const std::string &text, std::size_t indent) {
  fmt::print("{:{}}{}\n", "", indent, as_shown(text));
}

void put_wrapped(const Cell &text, const Layout &layout, std::size_t indent,
                 const std::string &heading) {
  const std::size_t room = layout.width > indent ? layout.width - indent : 1;
  std::string before = as_shown(heading);
  const std::string overflow = before.size() > indent ? before.substr(indent) : "";
  before.resize(indent, ' ');
  for (const std::string &line : wrap(overflow + as_shown(coloured(text, layout)), room)) {
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
    for (Cell &cell : row) cell.text = as_shown(cell.text);
  }
  const std::size_t room = layout.width > table_margin ? layout.width - table_margin : 1;
  const std::vector<std::size_t> most = column_widths(cells, room);
  // A column is as wide as its widest line is now.
  std::vector<std::size_t> widths(heading.size());
  std::vector<std::vector<Lines>> lines;
  for (const auto &row : cells) {
    auto &of_row = lines.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      of_row.push_back(wrap(row[i].text, most[i]));
      for (const std::string &line : of_row[i]) widths[i] = std::max(widths[i], width_of(line));
    }
  }
  std::string out;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    out += format_row(cells[k], lines[k], widths, layout);
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
