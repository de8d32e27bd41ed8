// The comparison of two switches as a page for a browser, and what all pages have in common.
#pragma once

#include <chrono>

#include "report/verdict.h"

namespace lab {

using WallTime = std::chrono::system_clock::time_point;

// The page of a comparison. It needs no other file and loads none. What comes from the switches is
// only ever text in it, and its policy lets the browser run nothing but its own script.
std::string write_page(const PairReport &report);

// --- parts of pages ---

// A text from outside, safe in an element and in quotation marks.
std::string escaped(std::string_view text, const char *comma = ",");

// The same in a direction of writing of its own. Long lists may break at commas.
std::string isolated(std::string_view text);

// A long text is folded behind its beginning, and behind what it is.
std::string folded(const std::string &text, const std::string &what = "");
std::string folded(const Vlans &vlans);

// The name of the switch, or else its source.
const std::string &name_side(const SideReport &side);

// "2026-11-24 09:30:00 +0100", local time.
std::string describe_time(WallTime time);

// "Accepted: a reason"; empty: it is not.
std::string describe_accepted(const std::optional<Acceptance> &accepted);

// How something looks: a class of the style, and a sign for whoever sees no colours.
struct Look {
  const char *name;
  const char *sign;
};
inline constexpr Look good_look = {"good", "="};
inline constexpr Look bad_look = {"bad", "≠"};
inline constexpr Look accepted_look = {"caution", "≈"};

// Of a verdict; nothing: it is not known.
const Look &look_of(std::optional<Outcome> outcome);

// The sign and the words.
std::string write_state(const Look &look, const std::string &html);

// The first cell is the heading of the row.
std::string write_row(const std::string &attributes, const std::vector<std::string> &cells);

std::string write_table(const char *kind, const std::string &caption,
                        const std::vector<std::string> &columns, const std::string &rows);

struct Document {
  std::string title;
  const char *head = "";            // more of it
  const char *contacts = "'none'";  // where the page may send requests to: its own server at most
  Look look;
  std::string what;  // above the heading
  std::string heading;
  std::string header;  // below it
  std::string main;
};

std::string write_document(const Document &document);

// --- parts of a comparison ---

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
