// Prints reports as text.
#pragma once

#include "output/layout.h"
#include "output/words.h"

namespace lab {

struct Style {
  Layout layout;
  bool quiet = false;           // only verdicts and unmet expectations
  bool only_different = false;  // only scopes that disagree or have accepted differences
  bool is_short = false;        // cut long lists that are equal on both sides
  SideNames sides = switch_names;
};

// --- checks ---

// Prints each scope, and a summary if there are several.
void print_checks(const std::vector<ScopeReport> &checks, const Style &style);

// Compares a scope now and after a step on one side.
void print_scope_change(const ScopeReport &now, const ScopeReport &then, std::size_t side,
                        const Style &style);

// --- comparisons ---

// Prints the verdict, the scopes and the notes.
void print_comparison(const PairReport &report, const Style &style);

// The results of many pairs by outcome, a line for each pair.
using PairCounts = std::map<Outcome, std::vector<std::string>>;

void count_result(const PairResult &result, PairCounts &counts);
void print_pair_result(const PairResult &result, const Layout &layout, bool with_notes);
void print_pair_counts(PairCounts counts);

// --- the tables of the library ---

// Explains a result code, parameter, command or field. Returns false if nothing has that name.
bool explain(const std::string &what, const Layout &layout);

// Lists "parameters", "commands", or both.
void list(const std::string &what, const Layout &layout);

// --- runs ---

void print_title(const std::string &path, const std::string &title, const std::string &about,
                 const Style &style);
void print_step(const StepReport &step, const Style &style);

// Prints the unmet expectations of a step before a what-if.
void print_unmet_step(const StepReport &step, const Style &style);
void print_end(const RunReport &report, const Style &style);
void print_what_if(const WhatIfReport &report, const Style &style);

}  // namespace lab
