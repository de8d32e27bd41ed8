// The verdict of a scope and of a pair with its reasons, the exit status, and the counts of a
// check. All outputs use these functions.
#pragma once

#include <map>
#include <set>

#include "report/pair.h"

namespace lab {

// --- scopes ---

// Returns whether a parameter differs, or is missing on one switch although the other compares it.
bool is_different(const ParameterReport &parameter);

// Returns the side that lacks the channel of a scope; nullopt if both have it.
std::optional<std::size_t> missing_side(const ScopeReport &scope);

// Returns the display texts of a parameter on left and right; nullopt: not sent. Different values
// with the same text get a suffix that distinguishes them.
std::array<std::optional<std::string>, 2> find_value_texts(const ParameterReport &parameter);

// Returns whether the scope has an accepted difference.
bool has_accepted(const ScopeReport &scope);

bool has_inconsistent_ports(const ScopeReport &scope);

// --- verdicts ---

enum class Outcome : uint8_t { agree, disagree, incomplete };

// In the order of urgency; nullopt: unknown.
inline constexpr std::optional<Outcome> outcomes_by_urgency[] = {
    Outcome::disagree, std::nullopt, Outcome::incomplete, Outcome::agree};

// Why a pair or a scope disagrees.
enum class Reason : uint8_t {
  spanning_tree_off,   // on one switch only
  missing_channel,     // on one switch only
  different,           // a parameter
  inconsistent_ports,  // ports of one channel differ on one switch
  not_checked,         // the check failed without a difference
  warnings,            // a strict comparison has warnings
};
using Reasons = std::set<Reason>;

Reasons find_reasons(const ScopeReport &scope);
Reasons find_reasons(const PairReport &report);

bool is_agreed(const ScopeReport &scope);
Outcome find_outcome(const PairReport &report);

// Returns whether a note is a warning that is not accepted.
bool is_warning(const Note &note);

// The exit status of the program. An incomplete comparison is `agreed` if that is accepted.
enum Status { agreed = 0, disagreed = 1, wrong = 2, incomplete = 3 };
Status find_status(const PairReport &report);

// Returns the worse of two: wrong input, then a difference, then an incomplete comparison.
Status worst_status(Status a, Status b);

// --- counts ---

struct ScopeCount {
  std::size_t scopes = 0;                   // those in which a switch sends the parameter
  std::vector<const ScopeReport *> differ;  // those in which it differs
};

struct Summary {
  std::size_t disagreeing = 0;                // scopes
  std::map<uint16_t, ScopeCount> parameters;  // by type; a missing channel has no differences
  std::array<std::size_t, 2> missing = {};    // channels that left and right lack
  std::size_t inconsistent = 0;               // scopes with inconsistent ports
  std::size_t accepted = 0;                   // scopes with accepted differences
};

Summary summarize(const std::vector<ScopeReport> &checks);

}  // namespace lab
