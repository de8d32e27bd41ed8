// What the comparison of one of many pairs found.
#pragma once

#include "report/pair.h"
#include "text/error.h"

namespace lab {

struct SourceErrors {
  std::string source;
  InputErrors errors;
};

struct PairResult {
  std::string name;
  std::vector<SourceErrors> errors;  // of the sources that have some
  PairReport report;                 // of no use with errors
  std::vector<bool> matched;         // which entries of accepted differences match
};

}  // namespace lab
