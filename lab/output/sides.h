// How the two sides of a report are called.
#pragma once

#include "report/pair.h"
#include "switch/names.h"

namespace lab {

using SideNames = std::array<const char *, 2>;

inline constexpr SideNames intended_names = {"intended", "actual"};

inline const SideNames &side_names(const PairReport &report) {
  return report.is_intended ? intended_names : switch_names;
}

}  // namespace lab
