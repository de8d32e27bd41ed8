// Lines of fields that tabs separate; lines that are empty or begin with # are passed over.
#pragma once

#include <string_view>
#include <vector>

namespace lab {

struct TabbedLine {
  int number;  // from 1
  std::vector<std::string_view> fields;
};

std::vector<TabbedLine> read_tabbed(std::string_view text);

}  // namespace lab
