// What was found, printed for a person.
#pragma once

#include "output/layout.h"
#include "output/words.h"

namespace lab {

struct Style {
  Layout layout;
  bool quiet = false;           // verdicts and expectations that are not met only
  bool only_different = false;  // of checks what does not agree, or differs as accepted
  bool is_short = false;        // long lists that are equal on both sides are cut
  SideNames sides = switch_names;
};

// --- checks ---

// The scopes of a check, and, of several, a summary.
void print_checks(const std::vector<ScopeReport> &checks, const Style &style);

// A scope as it is and as it would be after a step on a side.
void print_now_and_then(const ScopeReport &now, const ScopeReport &then, std::size_t side,
                        const Style &style);

// --- comparisons ---

// The verdict, the scopes (those that differ, or all), the notes.
void print_comparison(const PairReport &report, const Style &style);

// What the comparisons of many pairs came to: a line for each pair.
using PairCounts = std::map<Outcome, std::vector<std::string>>;

void count_result(const PairResult &result, PairCounts &counts);
void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes);
void print_pair_counts(PairCounts counts);

// --- the tables of the library ---

// A result code, parameter or command, by name, number or key. false: nothing of that name.
bool explain(const std::string &what, const Layout &layout);

// The parameters, the commands, or both.
void list(const std::string &what, const Layout &layout);

// --- runs ---

void print_title(const std::string &path, const std::string &title, const std::string &about,
                 const Style &style);
void print_step(const StepReport &step, const Style &style);

// Of a step before a what-if, only what was not as expected.
void print_unmet_step(const StepReport &step, const Style &style);
void print_end(const RunReport &report, const Style &style);
void print_what_if(const WhatIfReport &report, const Style &style);

}  // namespace lab
