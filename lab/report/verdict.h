// The verdict on a scope and on a pair, and why: the one place that decides it; and how many scopes
// of a check disagree, and by what.
#pragma once

#include <map>
#include <set>

#include "report/pair.h"

namespace lab {

// --- scopes ---

// Does a parameter differ, or does a switch lack it that the other compares?
bool is_different(const ParameterReport &parameter);

// The side that lacks the channel of a scope; nothing: both have it.
std::optional<std::size_t> missing_side(const ScopeReport &scope);

// What a parameter is on left and right, for display; nothing: not sent. Values with the
// same text get an addition that distinguishes them.
std::array<std::optional<std::string>, 2> find_value_texts(const ParameterReport &parameter);

// Is a difference of the scope accepted?
bool has_accepted(const ScopeReport &scope);

bool has_inconsistent_ports(const ScopeReport &scope);

// --- verdicts ---

enum class Outcome : uint8_t { agree, disagree, incomplete };

// What needs a look first; nothing: not known.
inline constexpr std::optional<Outcome> all_outcomes[] = {Outcome::disagree, std::nullopt,
                                                          Outcome::incomplete, Outcome::agree};

// Why a pair, or a scope, does not agree.
enum class Reason : uint8_t {
  spanning_tree_off,   // on one switch only
  missing_channel,     // on one switch only
  different,           // a parameter
  inconsistent_ports,  // ports of one channel on one switch
  not_checked,         // the library refused the check
  warnings,            // remain, and the comparison is strict
};
using Reasons = std::set<Reason>;

Reasons find_reasons(const ScopeReport &scope);
Reasons find_reasons(const PairReport &report);

bool is_agreed(const ScopeReport &scope);
Outcome find_outcome(const PairReport &report);

// A warning that is not accepted.
bool is_warning(const Note &note);

// The exit status for a comparison: 0 agree, 1 disagree, 3 incomplete, unless that is accepted.
enum Status { agreed = 0, disagreed = 1, wrong = 2, incomplete = 3 };
Status find_status(const PairReport &report);

// Of several, wrong input counts most, then a difference, then what could not be compared.
Status worst_status(Status a, Status b);

// --- counts ---

struct ScopeCount {
  std::size_t scopes = 0;                   // in which a parameter is sent by a switch
  std::vector<const ScopeReport *> differ;  // of these
};

struct Summary {
  std::size_t disagreeing = 0;                // scopes
  std::map<uint16_t, ScopeCount> parameters;  // by type; a missing channel has no differences
  std::array<std::size_t, 2> missing = {};    // channels that left and right lack
  std::size_t inconsistent = 0;
  std::size_t accepted = 0;  // scopes with accepted differences
};

Summary summarize(const std::vector<ScopeReport> &checks);

}  // namespace lab
