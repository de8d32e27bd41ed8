// The words in which people read what was found.
#pragma once

#include "report/groups.h"
#include "report/run.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {

// How the two sides of a report are called.
using SideNames = std::array<const char *, 2>;
inline constexpr SideNames intended_names = {"intended", "actual"};
const SideNames &side_names(const PairReport &report);

// "a, b and 3 more".
std::string list_first(const std::vector<std::string> &texts, std::size_t most,
                       const char *between = ", ");

// "1 scope", "2 scopes".
std::string count_of(std::size_t count, const char *what);

// "stp-mode", "loop-guard" for each type.
std::vector<std::string> list_keys(const std::vector<uint16_t> &types);

// --- checks ---

// "STP_MCEC_ERR_TYPE1_LOOP_GUARD (0x40DD0040)", "ok (0x00000000)".
std::string describe_result(uint32_t code, const char *success = "ok");

// "DIFFERENT: loop-guard   (STP_MCEC_ERR_TYPE1_LOOP_GUARD, 0x40DD0040)", "agrees".
std::string describe_code(const ScopeReport &scope, std::size_t side,
                          const SideNames &names = switch_names);

// "switch", "port 0x1000 (pod)", "channel 20: 0x1000 on the left, 0x2000 on the right", and of
// several alike "PortChannel10-12 (3 channels)".
std::string describe_scope(const ScopeReport &scope, const SideNames &names = switch_names);
std::string describe_group(const ScopeGroup &group, const SideNames &names);

// Adds "inconsistent ports (2)" where there are some.
void add_count(const std::string &what, std::size_t count, std::vector<std::string> &causes);

// "stp-mode (1)" for each parameter that differs in a scope.
std::vector<std::string> count_differences(const Summary &summary);

// "same", "missing at the peer".
const char *state_name(State state);

// How a parameter compares. Where the switches see it differently, each is named; of a parameter
// that one of them lacks, the other's view counts.
std::string describe_states(const ParameterReport &parameter,
                            const SideNames &names = switch_names);

// "port Ethernet4 is not set like Ethernet0: loop-guard".
std::string describe_inconsistent_port(const InconsistentPort &port, const PairScope::End &end);

// "a reason (until 2026-12-31)".
std::string describe_acceptance(const Acceptance &acceptance);

// --- pairs ---

// What is wrong, in the first line of a comparison: "neither switch has a multi-chassis channel".
const char *describe_incomplete(Incomplete reason);

// "agree", "disagree", "incomplete", "unknown".
const char *outcome_word(std::optional<Outcome> outcome);

// "rapid-pvst", "mst", "off", "unknown".
const char *spanning_tree_name(SpanningTree spanning_tree);

// "mst-region-name (1), ifi-port-guard (3)".
std::string describe_differences(const PairReport &report);

// A sentence, without the channel that the note is of: notes on several channels may have the same.
std::string describe_note(const Note &note, const SideNames &names = switch_names);

// The same, behind the channels.
std::string describe_notes(const NoteGroup &group, const SideNames &names = switch_names);

// "warning", "info".
const char *severity_name(NoteKind kind);

// --- advice ---

// What a parameter that differs does to a real pair, and what is done about it.
struct Advice {
  uint16_t type;
  const char *harm;
  const char *fix;
};

const Advice &advice_on(uint16_t type);

// What a field means that gives no parameter.
const char *field_meaning(const Field &field);

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left"; in the words of state files
// where a side has no rows. Of a group, for all of its scopes.
std::string describe_fix(const Fix &fix, const SideNames &names, const ScopeGroup *group = nullptr);

// What is to be done about a channel that a switch lacks; empty: nothing, or it is not known.
std::string describe_missing_row(const ScopeGroup &group, const SideNames &names);

// Does a patch change the mode of spanning tree? On a running switch that takes two steps.
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
