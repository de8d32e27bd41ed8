#include "output/layout.h"

#include <fmt/color.h>
#include <fmt/core.h>
#include <langinfo.h>
#include <libsmartcols/libsmartcols.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

#include "text/text.h"

namespace lab {
namespace {

constexpr std::size_t least_width_of_terminal = 40;
constexpr std::size_t least_column = 8;
constexpr std::size_t table_margin = 4;

// The columns of a character of UTF-8; less than 0: this locale cannot show it.
int columns_of(std::string_view character) {
  if (character.size() == 1) return 1;
  if (!takes_utf8()) return -1;
  wchar_t wide = 0;
  std::mbstate_t state{};
  const std::size_t read = std::mbrtowc(&wide, character.data(), character.size(), &state);
  return read == character.size() ? wcwidth(wide) : -1;
}

// What stands at a place of a text that is shown: a character, or a colour, which takes no column.
struct Unit {
  std::size_t bytes;
  std::size_t columns;
};

Unit unit_at(std::string_view text) {
  if (text[0] == '\033') return {std::min(text.find('m'), text.size() - 1) + 1, 0};
  const std::size_t bytes = std::max<std::size_t>(character_bytes(text), 1);
  return {bytes, static_cast<std::size_t>(std::max(columns_of(text.substr(0, bytes)), 0))};
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

// Where the next line of a text ends: behind a blank or a comma, else a hyphen, else where it must.
std::size_t line_end(std::string_view text, std::size_t width) {
  const std::size_t fits = bytes_that_fit(text, width);
  // A comma stays on its line, a blank goes: it may stand just past the end.
  std::size_t cut = text.substr(0, fits).find_last_of(" ,");
  if (fits < text.size() && text[fits] == ' ') cut = fits;
  if (cut == text.npos || cut == 0) cut = text.substr(0, fits).find_last_of('-');
  return cut == text.npos || cut == 0 ? fits : cut + 1;
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
  std::size_t total = 2 * (heading.size() - 1);
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

const char *scols_colour(Colour colour) {
  constexpr const char *names[] = {nullptr, "red", "green", "yellow", "cyan", "bold"};
  return names[static_cast<std::size_t>(colour)];
}

std::string without_trailing_blanks(std::string text) {
  for (std::size_t at = 0; (at = text.find(" \n", at)) != text.npos;) {
    const std::size_t blanks = text.find_last_not_of(' ', at) + 1;
    text.erase(blanks, at + 1 - blanks);
    at = blanks;
  }
  return text;
}

using Table = std::unique_ptr<libscols_table, void (*)(libscols_table *)>;

Table new_table(const std::vector<std::string> &heading, const Layout &layout) {
  Table table(scols_new_table(), scols_unref_table);
  scols_table_enable_colors(table.get(), layout.colour ? 1 : 0);
  scols_table_enable_noencoding(table.get(), 1);
  scols_table_set_column_separator(table.get(), "  ");
  scols_table_set_termforce(table.get(), SCOLS_TERMFORCE_NEVER);
  scols_table_new_column(table.get(), "", static_cast<double>(table_margin - 2),
                         SCOLS_FL_STRICTWIDTH);
  for (const std::string &title : heading) {
    libscols_column *column = scols_table_new_column(table.get(), title.c_str(), 0, SCOLS_FL_WRAP);
    scols_column_set_wrapfunc(column, scols_wrapnl_chunksize, scols_wrapnl_nextchunk, nullptr);
    scols_column_set_safechars(column, "\n");
  }
  return table;
}

}  // namespace

bool takes_utf8() {
  static const bool takes = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
  return takes;
}

Layout standard_layout(bool no_color) {
  Layout layout;
  const auto is_set = [](const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr && value[0] != '\0';
  };
  const char *terminal = std::getenv("TERM");
  const bool is_dumb = terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
  layout.colour = isatty(STDOUT_FILENO) == 1 && !no_color && !is_set("NO_COLOR") && !is_dumb;
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
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view character =
        text.substr(0, std::max<std::size_t>(character_bytes(text), 1));
    if (columns_of(character) >= 0) {
      out += character;
    } else {
      for (const char byte : character) out += "\\x" + hex({static_cast<uint8_t>(byte)});
    }
    text.remove_prefix(character.size());
  }
  return out;
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
  const std::vector<std::size_t> widths = column_widths(heading, cells, room);
  const Table table = new_table(heading, layout);
  for (const auto &row : cells) {
    libscols_line *line = scols_table_new_line(table.get(), nullptr);
    scols_line_set_data(line, 0, std::string(table_margin - 2, ' ').c_str());
    for (std::size_t i = 0; i < row.size(); ++i) {
      scols_line_set_data(line, i + 1, wrapped(row[i].text, widths[i]).c_str());
      if (row[i].colour != Colour::none) {
        scols_cell_set_color(scols_line_get_cell(line, i + 1), scols_colour(row[i].colour));
      }
    }
  }
  char *text = nullptr;
  scols_print_table_to_string(table.get(), &text);
  fmt::print("{}", without_trailing_blanks(std::string(text != nullptr ? text : "") + "\n"));
  std::free(text);
}

bool all_written(std::string &why) {
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  if (flushed && std::ferror(stdout) == 0) return true;
  if (why.empty()) why = errno != 0 ? std::strerror(errno) : "it failed before";
  return false;
}

}  // namespace lab
