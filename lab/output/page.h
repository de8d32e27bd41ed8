// The comparison of two switches as a page for a browser.
#pragma once

#include "report/pair.h"

namespace lab {

// The page of a comparison. It needs no other file and loads none. What comes from the switches is
// only ever text in it, and its policy lets the browser run nothing but its own script.
std::string write_page(const PairReport &report);

// --- parts of the page ---

// A text from outside, safe in an element and in quotation marks.
std::string escaped(std::string_view text, const char *comma = ",");

// The same in a direction of writing of its own. Long lists may break at commas.
std::string isolated(std::string_view text);

// A long text is folded behind its beginning, and behind what it is.
std::string folded(const std::string &text, const std::string &what = "");
std::string folded(const Vlans &vlans);

// The name of the switch, or else its source.
const std::string &name_side(const SideReport &side);

// "Accepted: a reason"; empty: it is not.
std::string describe_accepted(const std::optional<Acceptance> &accepted);

// How something looks, and a sign beside the words for whoever sees no colours.
struct Look {
  const char *name;
  const char *sign;
};

enum class ScopeClass { different, accepted, agreed };
using Scopes = std::vector<const ScopeReport *>;
Scopes select_scopes(const PairReport &report, ScopeClass wanted);

// "PortChannel10-69, PortChannel80 and 5 more"; as links, each leads to its table.
std::string link_scopes(const Scopes &scopes, const PairReport &report, bool as_links = true);

std::string write_scope_tables(const PairReport &report, ScopeClass wanted);
std::string write_parameter_summary(const PairReport &report);

// The twin VLANs, and what both switches have for each VLAN.
std::string write_vlan_section(const PairReport &report);

}  // namespace lab
