// The report of a check of one scope: the switch, a port or a channel.
#pragma once

#include "pair/protocol.h"
#include "pair/scopes.h"
#include "sonic/fix.h"

namespace lab {

// The acceptance of a difference.
struct Acceptance {
  std::string reason;
  std::string until;  // the last day, "2026-12-31"; empty: no limit

  bool operator==(const Acceptance &) const = default;
};

using Patch = std::vector<PatchOperation>;

// The fix of a parameter that differs, with its patches.
struct FixReport {
  Fix fix;
  // The patch of the left or right side that suffices alone; nullopt if there is none.
  std::array<std::optional<Patch>, 2> alone = {};
  // The patches to apply together, if neither side should change alone.
  std::optional<std::array<Patch, 2>> both = {};

  bool operator==(const FixReport &) const = default;
};

// The result of the library for one parameter on one switch.
enum class State : uint8_t {
  same,
  different,
  same_on_twins,    // disabled VLANs that differ only on VLANs that are not twins
  missing_at_peer,  // the check fails
  only_at_peer,     // ignored
  not_in_mode,      // this state and the following ones: not compared
  not_without_twins,
  ignored_on_pod,
  not_without_mode,
};

struct ParameterReport {
  uint16_t type = 0;
  std::array<std::optional<Bytes>, 2> values = {};  // on left and right; nullopt: not sent
  std::array<State, 2> states = {};                 // on left and right
  // Only of a VLAN map in a comparison: the configuration digests of left and right.
  std::optional<std::array<std::optional<std::string>, 2>> digests = {};
  std::optional<FixReport> fix = {};
  std::optional<Acceptance> accepted = {};

  bool operator==(const ParameterReport &) const = default;
};

struct ScopeReport {
  PairScope scope;
  bool on_pod = false;
  std::array<uint32_t, 2> codes = {};  // the result codes of the library on left and right
  std::vector<ParameterReport> parameters;
  std::array<std::vector<InconsistentPort>, 2> inconsistent;
  // The twin VLANs that agree and that differ, if disabled VLANs were compared.
  std::optional<Vlans> pass;
  std::optional<Vlans> fail;
  std::string missing_row;  // the row to add on the side without the channel, if it has rows
  std::optional<Acceptance> accepted;  // only of a missing channel

  bool operator==(const ScopeReport &) const = default;
};

}  // namespace lab
