// A list of pairs to compare: lines of a name, the left and the right source and, if need be, the
// namespace of their dumps, separated by tabs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tasks/pairs.h"
#include "text/error.h"

namespace lab {

// Sources are relative to `folder`, which ends with a slash or is empty. Errors show nothing of a
// line, since it may be a password.
std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      InputErrors &errors);

// Those of a file. Its errors are printed, and added to those of the sources.
std::vector<PairEntry> read_pairs_file(const std::string &path,
                                       std::vector<SourceErrors> &source_errors);

}  // namespace lab
