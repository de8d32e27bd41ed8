// Words and sentences that the text, HTML, JSON and metrics outputs share.
#pragma once

#include "report/groups.h"
#include "report/run.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {

struct Difference;

// The names of the sides of a report.
using SideNames = std::array<const char *, 2>;
inline constexpr SideNames intended_names = {"intended", "actual"};
const SideNames &side_names(const PairReport &report);

// "a, b and 3 more".
std::string list_first(const std::vector<std::string> &texts, std::size_t most,
                       const char *between = ", ");

// "1 scope", "2 scopes".
std::string format_count(std::size_t count, const char *what);

// "none differs", "1 differs", "2 differ".
std::string format_verb(std::size_t count, const char *verb);

// The keys of parameters: "stp-mode", "loop-guard".
std::vector<std::string> list_keys(const std::vector<uint16_t> &types);

// --- checks ---

// What only one side has of VLANs that both sides send; else empty.
Difference find_difference(const ParameterReport &parameter);

// "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)", "ok (0x00000000)".
std::string describe_result(uint32_t code, const char *success = "ok");

// "DIFFERENT: loop-guard   (STP_MCEC_ERR_TYPE1_LOOP_GUARD, 0x40DD0040)", "agrees".
std::string describe_code(const ScopeReport &scope, std::size_t side,
                          const SideNames &names = switch_names);

// "switch", "port 0x1000 (pod)", "PortChannel20: 0x1000 on the left, 0x2000 on the right".
std::string describe_scope(const ScopeReport &scope, const SideNames &names = switch_names);

// For a group of several scopes "PortChannel10-12 (3 channels)".
std::string describe_group(const ScopeGroup &group, const SideNames &names);

// Adds "inconsistent ports (2)" if the count is not 0.
void add_count(const std::string &what, std::size_t count, std::vector<std::string> &causes);

// "stp-mode (1)" for each parameter that differs, with the number of its scopes.
std::vector<std::string> count_differences(const Summary &summary);

// "same", "missing at the peer".
const char *state_name(State state);

// Both states of a parameter: "left: ...; right: ..." if they differ. If one switch does not send
// the parameter, only the state on the other.
std::string describe_states(const ParameterReport &parameter,
                            const SideNames &names = switch_names);

// "port Ethernet4 differs from Ethernet0: ifi-port-guard".
std::string describe_inconsistent_port(const InconsistentPort &port, const PairScope::End &end);

// "a reason (until 2026-12-31)".
std::string describe_acceptance(const Acceptance &acceptance);

// --- pairs ---

// The names of the sides with spanning tree off.
std::vector<std::string> list_sides_off(const PairReport &report, const SideNames &names);

// "neither switch has a multi-chassis channel".
const char *describe_incomplete(Incomplete reason);

// "agree", "disagree", "incomplete", "unknown".
const char *outcome_name(std::optional<Outcome> outcome);

// "rapid-pvst", "mst", "off", "unknown".
const char *spanning_tree_name(SpanningTree spanning_tree);

// "mst-region-name (1), ifi-port-guard (3)".
std::string describe_differences(const PairReport &report);

// A sentence that does not name the channel: the notes of a group share it.
std::string describe_note(const Note &note, const SideNames &names = switch_names);

// The channels of a group and its sentence: "PortChannel10-12: Spanning tree is ...".
std::string describe_notes(const NoteGroup &group, const SideNames &names = switch_names);

// "warning", "info".
const char *severity_name(NoteKind kind);

// --- advice ---

// The effect of a difference in a parameter, and the fix.
struct Advice {
  uint16_t type;
  const char *effect;
  const char *fix;
};

const Advice &find_advice(uint16_t type);

// The meaning of a field that belongs to no parameter.
const char *describe_field(const Field &field);

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left"; if no side has rows, in the
// words of state files. With a group, the fix names all of its channels.
std::string describe_fix(const Fix &fix, const SideNames &names, const ScopeGroup *group = nullptr);

// "add MCLAG_INTERFACE|1|PortChannel20 on right" for a channel that a switch lacks; empty if it is
// accepted or the row is unknown.
std::string describe_missing_row(const ScopeGroup &group, const SideNames &names);

// Whether a patch or a fix changes the mode of spanning tree, which takes two steps on a switch.
bool has_mode_change(const Patch &patch);
bool has_mode_change(const ParameterReport &parameter);

inline constexpr char mode_steps[] =
    "disable the old mode on the switch first, then enable the new one";

// --- runs ---

// "stp-mode", "ifi-port-type@0x1000".
std::string describe_record(const ParameterRecord &record);

// "left verdict", "right verdict of PortChannel10", "differ".
std::string describe_subject(const ExpectationReport &expectation);

}  // namespace lab
