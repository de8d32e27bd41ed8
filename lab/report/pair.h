// What a comparison of two switches found.
#pragma once

#include <ctime>

#include "report/scope.h"
#include "text/error.h"

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

// --- notes: what is worth a look although it does not change the verdict ---

enum class NoteKind : uint8_t {
  spanning_tree_on_one_half,
  vlan_on_one_half,
  port_setting,
  spanning_tree_off_on_channel,
  vlan_timer,
  timer,
  domain,
  peers_do_not_cross,
  same_address,
  no_peer_link,
  spanning_tree_off,
  acceptance,
};

// The keys of all kinds in their order: "vlan-on-one-half".
const std::vector<std::string> &note_keys();

// A setting that differs, with the value of each side; nothing: not set.
struct NoteField {
  std::string name;
  std::array<std::optional<std::string>, 2> values;
  Vlans vlans = {};  // to which it belongs; none: it is of no VLAN

  bool operator==(const NoteField &) const = default;
};

// What is wrong with an entry of a file of accepted differences.
enum class AcceptanceProblem : uint8_t { expired, matches_nothing, no_reason };

// At most one of each kind for the switch and for each channel; no-peer-link is one for each side.
struct Note {
  NoteKind kind = NoteKind::acceptance;
  std::string channel = {};              // empty: the switch
  std::optional<std::size_t> side = {};  // that it is about; nothing: both
  std::array<Vlans, 2> vlans = {};       // that the channel carries on this side only
  std::vector<NoteField> fields = {};    // that differ
  std::optional<Acceptance> accepted = {};
  // Of NoteKind::acceptance: the entry, by its line.
  AcceptanceProblem problem = AcceptanceProblem::expired;
  int line = 0;
  std::string until = {};

  bool operator==(const Note &) const = default;
};

// All notes but those on accepted differences, in the order of their kinds. With an intended state
// on the left, addresses and peers of two switches are not compared.
std::vector<Note> find_notes(const PairOfSettings &settings, bool is_intended);

struct PairReport {
  std::string name;          // of one of many pairs
  bool is_intended = false;  // the left side is the intended state of the right one
  bool is_strict = false;    // warnings count
  std::array<SideReport, 2> sides;
  Vlans twin_vlans;
  std::vector<ScopeReport> checks = {};  // none where spanning tree is off on either switch
  std::vector<IncompleteReport> incomplete = {};
  std::vector<Note> notes;
  std::vector<bool> matched = {};  // which entries of accepted differences match
};

struct SourceErrors {
  std::string source;
  InputErrors errors;
};

// One of many pairs.
struct PairResult {
  std::string name;
  std::vector<SourceErrors> errors = {};  // of the sources that have some
  PairReport report = {};                 // of no use with errors
};

}  // namespace lab
