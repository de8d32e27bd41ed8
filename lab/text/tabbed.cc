#include "text/tabbed.h"

#include "text/text.h"

namespace lab {

std::vector<TabbedLine> read_tabbed(std::string_view text) {
  std::vector<TabbedLine> lines;
  int number = 0;
  for (std::string_view line : split(without_byte_order_mark(text), '\n')) {
    ++number;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.empty() && line[0] != '#') lines.push_back({number, split(line, '\t')});
  }
  return lines;
}

}  // namespace lab
