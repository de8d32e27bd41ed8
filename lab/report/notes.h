// What is worth a look in a pair of switches although it does not change the verdict.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "switch/settings.h"

namespace lab {

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

enum class Severity : uint8_t { info, warning };

// A kind by its key ("vlan-on-one-half").
struct NoteRule {
  NoteKind kind;
  const char *key;
  Severity severity;
};
std::span<const NoteRule> note_rules();  // in the order of the kinds
const NoteRule &rule_of(NoteKind kind);
const NoteRule *find_note_rule(std::string_view key);

// A setting that differs, with the value of each side; nothing: not set.
struct NoteField {
  std::string name;
  std::array<std::optional<std::string>, 2> values;
  Vlans vlans;  // to which it belongs; none: it is of no VLAN

  bool operator==(const NoteField &) const = default;
};

// At most one of each kind for the switch and for each channel; no-peer-link is one for each side.
struct Note {
  NoteKind kind;
  std::string channel;              // empty: the switch
  std::optional<std::size_t> side;  // that it is about; nothing: both
  std::array<Vlans, 2> vlans;       // that the channel carries on this side only
  std::vector<NoteField> fields;    // that differ

  bool operator==(const Note &) const = default;
};

// All notes but those on accepted differences, in the order of their kinds. With an intended state
// on the left, addresses and peers of two switches are not compared.
std::vector<Note> find_notes(const PairOfSettings &settings, bool is_intended);

}  // namespace lab
