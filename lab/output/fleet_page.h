// The page of all pairs that are watched.
#pragma once

#include <chrono>
#include <string>

#include "report/status.h"

namespace lab {

// Which pairs a page shows.
struct FleetFilter {
  std::string verdict;  // as outcome_word() writes it; empty: all
  std::string name;     // a part of the pair's name or of a source, in any case
};

// The page reads itself again every few seconds, by its script or without.
std::string write_fleet_page(const FleetStatus &fleet, const FleetFilter &filter,
                             std::chrono::system_clock::time_point now);

// The page of a pair whose verdict is not known, in place of a comparison that may hold no more.
std::string write_unknown_page(const PairStatus &status, std::chrono::system_clock::time_point now);

}  // namespace lab
