// Comparisons of many pairs: a line or a document for each, and a summary.
#pragma once

#include "output/layout.h"
#include "report/pairs.h"

namespace lab {

// What the comparisons came to.
struct PairCounts {
  std::size_t agree = 0;
  std::vector<std::string> differing;  // a line for each pair
  std::vector<std::string> failed;     // the same, of those that were not compared
};

void count_result(const PairResult &result, PairCounts &counts);

void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes);
void print_pair_counts(const PairCounts &counts);

}  // namespace lab
