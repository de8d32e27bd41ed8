// A list of pairs to compare: lines of a name, the left and the right source and, if need be, the
// namespace of their dumps, separated by tabs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/commands.h"
#include "tasks/pairs.h"

namespace lab {

// Sources are relative to `folder`, which ends with a slash or is empty; `name_space` is that of
// dumps whose line has none. Errors show nothing of a line, since it may be a password. The
// passwords of the environment are for two servers, and a list may name any: none is sent.
std::vector<PairEntry> read_pair_list(std::string_view text, const std::string &folder,
                                      const std::string &name_space, InputErrors &errors);

// Those of a file. Its errors are printed, and added to those of the sources.
std::vector<PairEntry> read_pairs_file(const std::string &path, const std::string &name_space,
                                       std::vector<SourceErrors> &source_errors);

// The sources get the logins of a file, none without a path. Errors as above.
void add_logins(const std::string &path, std::vector<PairEntry> &pairs,
                std::vector<SourceErrors> &source_errors);

// The pairs that are to be watched, or the only one: the passwords of the environment are for its
// two sources. Errors as above, those of the sources, too.
std::vector<PairEntry> read_watched_pairs(const Arguments &arguments,
                                          std::vector<SourceErrors> &errors);

}  // namespace lab
