#include "text/ranges.h"

#include <algorithm>
#include <string>

#include "text/text.h"

namespace lab {

ParsedRanges parse_ranges(std::string_view text, uint32_t most) {
  ParsedRanges parsed;
  std::string rest(text);
  std::erase(rest, ' ');
  for (const std::string_view part : split(rest, ',')) {
    const std::size_t dash = part.find('-');
    const auto first = parse_number(part.substr(0, dash));
    const auto last = dash == part.npos ? first : parse_number(part.substr(dash + 1));
    if (!first || !last) return {{}, RangeFault::no_list};
    if (*first > most || *last > most) return {{}, RangeFault::too_great};
    if (*first > *last) return {{}, RangeFault::reversed};
    parsed.ranges.emplace_back(*first, *last);
  }
  return parsed;
}

}  // namespace lab
