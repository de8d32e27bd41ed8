// A list of pairs to compare: lines of a name, the left and the right source, separated by tabs.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "text/error.h"

namespace lab {

struct PairLine {
  std::string name;
  std::array<std::string, 2> sources;
};

// Sources are relative to `folder`, which ends with a slash or is empty. Errors show nothing of a line,
// since it may be a password.
std::vector<PairLine> read_pair_list(std::string_view text, const std::string &folder,
                                     InputErrors &errors);

}  // namespace lab
