// What a comparison of two switches found.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "report/notes.h"
#include "report/scope.h"

namespace lab {

enum class SpanningTree : uint8_t { off, rapid_pvst, mst, unknown };

struct SideReport {
  std::string source;  // without a password
  std::string name;
  SpanningTree spanning_tree = SpanningTree::unknown;

  bool operator==(const SideReport &) const = default;
};

struct PairReport {
  std::array<SideReport, 2> sides;
  Vlans twin_vlans;
  std::vector<ScopeReport> checks;  // none where spanning tree is off on either switch
  std::vector<Note> notes;
};

}  // namespace lab
