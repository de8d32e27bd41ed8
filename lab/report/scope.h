// What a check found in one scope: the switch, a port or a channel.
#pragma once

#include "pair/protocol.h"
#include "pair/scopes.h"
#include "sonic/fix.h"

namespace lab {

// Why a difference is accepted, and until which date ("2026-12-31"; empty: for good).
struct Acceptance {
  std::string reason;
  std::string until;

  bool operator==(const Acceptance &) const = default;
};

using Patch = std::vector<PatchOperation>;

// What would bring a parameter into agreement.
struct FixReport {
  Fix fix;
  // Of left and right, the patch of its dump that alone is enough; nothing: that side cannot.
  std::array<std::optional<Patch>, 2> alone = {};
  // To be applied together, where neither side should change alone.
  std::optional<std::array<Patch, 2>> both = {};

  bool operator==(const FixReport &) const = default;
};

// What the library finds about a parameter alone.
enum class State : uint8_t {
  same,             // it compares it, and it agrees
  different,        // it compares it, and it does not
  same_on_twins,    // disabled VLANs that differ on other VLANs only
  missing_at_peer,  // it compares it and refuses without it
  only_at_peer,     // it does not look at it
  not_in_mode,      // what follows is not compared, each for another reason
  not_without_twins,
  ignored_on_pod,
  not_without_mode,
};

struct ParameterReport {
  uint16_t type = 0;
  std::array<std::optional<Bytes>, 2> values = {};  // of left and right; nothing: not sent
  std::array<State, 2> states = {};                 // as left and right compare them
  // Of a VLAN map in a comparison: the configuration digest of left and right.
  std::optional<std::array<std::optional<std::string>, 2>> digests = {};
  std::optional<FixReport> fix = {};
  std::optional<Acceptance> accepted = {};

  bool operator==(const ParameterReport &) const = default;
};

struct ScopeReport {
  PairScope scope;
  bool on_pod = false;
  std::array<uint32_t, 2> codes = {};  // the library's result on left and right
  std::vector<ParameterReport> parameters;
  std::array<std::vector<InconsistentPort>, 2> inconsistent;
  // The twin VLANs by whether they agree, where disabled VLANs were compared.
  std::optional<Vlans> pass;
  std::optional<Vlans> fail;
  std::string missing_row;             // that the side without the channel lacks, where it has rows
  std::optional<Acceptance> accepted;  // of a missing channel

  bool operator==(const ScopeReport &) const = default;
};

}  // namespace lab
