// Lists of ranges of numbers: "1-10,20".
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace lab {

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// What is wrong with a text that should be a list of ranges.
enum class RangeFault { none, no_list, reversed, too_great };

struct ParsedRanges {
  Ranges ranges;  // in the order of the text; of no use with a fault
  RangeFault fault = RangeFault::none;
};

// "1-10,20" or "0x1000-0x1003,0x2000", numbers up to `most`; blanks are skipped.
ParsedRanges parse_ranges(std::string_view text, uint32_t most);

}  // namespace lab
