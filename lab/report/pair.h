// What a comparison of two switches found.
#pragma once

#include <array>
#include <ctime>
#include <optional>
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
  std::optional<std::time_t> modified;  // a file; nothing: the source is none

  bool operator==(const SideReport &) const = default;
};

// What the verdict depends on, and could not be compared.
enum class Incomplete : uint8_t {
  no_channels,    // neither switch has a multi-chassis channel
  no_twin_vlans,  // Rapid-PVST on both, and no VLAN is a twin
};

struct IncompleteReport {
  Incomplete reason;
  std::optional<Acceptance> accepted;

  bool operator==(const IncompleteReport &) const = default;
};

// What is wrong with an entry of a file of accepted differences.
enum class AcceptanceProblem : uint8_t { expired, matches_nothing, no_reason };

struct NoteReport {
  Note note;
  std::optional<Acceptance> accepted;
  // Of NoteKind::acceptance: the entry, by its line.
  AcceptanceProblem problem = AcceptanceProblem::expired;
  int line = 0;
  std::string until;

  bool operator==(const NoteReport &) const = default;
};

struct PairReport {
  std::string name;  // of one of many pairs
  bool is_one_of_many = false;
  bool is_intended = false;  // the left side is the intended state of the right one
  bool is_strict = false;    // warnings count
  std::array<SideReport, 2> sides;
  Vlans twin_vlans;
  std::vector<ScopeReport> checks;  // none where spanning tree is off on either switch
  std::vector<IncompleteReport> incomplete;
  std::vector<NoteReport> notes;
};

}  // namespace lab
