// How many scopes of a check disagree, and by what.
#pragma once

#include <map>

#include "report/scope.h"

namespace lab {

struct ScopeCount {
  std::size_t scopes = 0;                   // in which a parameter is sent by a switch
  std::vector<const ScopeReport *> differ;  // of these
};

struct Summary {
  std::size_t scopes = 0;
  std::size_t disagreeing = 0;
  std::map<uint16_t, ScopeCount> parameters;  // by type; a missing channel has no differences
  std::array<std::size_t, 2> missing = {};    // channels that left and right lack
  std::size_t inconsistent = 0;
  std::size_t accepted = 0;  // scopes with accepted differences
};

Summary summarize(const std::vector<ScopeReport> &checks);

}  // namespace lab
