// What is known of a watched pair now.
#pragma once

#include <chrono>
#include <memory>

#include "report/verdict.h"

namespace lab {

struct PairStatus {
  std::array<std::string, 2> sources;
  std::optional<Outcome> outcome;                  // nothing: not known
  std::shared_ptr<const PairReport> comparison;    // the last
  std::array<bool, 2> connected = {};              // each source
  std::chrono::system_clock::time_point compared;  // when `outcome` was last confirmed; 0: never
};

}  // namespace lab
