// The report of a comparison of two switches.
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
  std::optional<std::time_t> modified;  // only of a file

  bool operator==(const SideReport &) const = default;
};

// Why a verdict is incomplete: something that it depends on could not be compared.
enum class Incomplete : uint8_t {
  no_channels,    // neither switch has a multi-chassis channel
  no_twin_vlans,  // both switches run Rapid-PVST, and no VLAN is a twin
};

struct IncompleteReport {
  Incomplete reason;
  std::optional<Acceptance> accepted;

  bool operator==(const IncompleteReport &) const = default;
};

// --- notes: findings that do not change the verdict ---

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

// Returns the keys of all kinds, in their order: "vlan-on-one-half".
const std::vector<std::string> &note_keys();

// A setting that differs, with the value of each side; nullopt: not set.
struct NoteField {
  std::string name;
  std::array<std::optional<std::string>, 2> values;
  Vlans vlans = {};  // the VLANs of a VLAN setting

  bool operator==(const NoteField &) const = default;
};

// A problem of an entry in a file of accepted differences.
enum class AcceptanceProblem : uint8_t { expired, matches_nothing, no_reason };

// There is at most one note of each kind for the switch and for each channel, but a no_peer_link
// note for each side.
struct Note {
  NoteKind kind = NoteKind::acceptance;
  std::string channel = {};              // empty: the switch
  std::optional<std::size_t> side = {};  // nullopt: both
  std::array<Vlans, 2> vlans = {};       // those that the channel carries on this side only
  std::vector<NoteField> fields = {};    // those that differ
  std::optional<Acceptance> accepted = {};
  // Only of NoteKind::acceptance: the problem of an entry, and its line and date.
  AcceptanceProblem problem = AcceptanceProblem::expired;
  int line = 0;
  std::string until = {};

  bool operator==(const Note &) const = default;
};

// Finds all notes except those on accepted differences, sorted by kind. Does not compare addresses
// and peers if the left side is an intended state.
std::vector<Note> find_notes(const SettingsPairView &settings, bool is_intended);

struct PairReport {
  std::string name;          // of the pair, if it is one of many
  bool is_intended = false;  // the left side is the intended state of the right side
  bool is_strict = false;    // with warnings, the pair disagrees
  std::array<SideReport, 2> sides;
  Vlans twin_vlans;
  std::vector<ScopeReport> checks = {};  // empty if spanning tree is off on a switch
  std::vector<IncompleteReport> incomplete = {};
  std::vector<Note> notes;
  std::vector<bool> matched = {};  // which accepted differences match
};

struct SourceErrors {
  std::string source;
  InputErrors errors;
};

// The result of one of many pairs.
struct PairResult {
  std::string name;
  std::vector<SourceErrors> errors = {};  // only of sources with errors
  PairReport report = {};                 // invalid if there are errors
};

}  // namespace lab
