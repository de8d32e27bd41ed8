// The parts of the page about scopes: a table for each group of scopes, and the summary.
#pragma once

#include <string>
#include <vector>

#include "report/pair.h"

namespace lab {

enum class ScopeClass { different, accepted, agreed };

std::vector<const ScopeReport *> select_scopes(const PairReport &report, ScopeClass wanted);

// "PortChannel10-69, PortChannel80 and 5 more"; as links, each leads to its table.
std::string link_scopes(const std::vector<const ScopeReport *> &scopes, const PairReport &report,
                        bool as_links = true);

// The name of the switch, or else its source.
const std::string &name_side(const SideReport &side);

std::string write_scope_tables(const PairReport &report, ScopeClass wanted);

std::string write_parameter_summary(const PairReport &report);

}  // namespace lab
