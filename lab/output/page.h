// Writes the HTML page of a comparison, and the parts that all pages share.
#pragma once

#include <chrono>

#include "report/verdict.h"

namespace lab {

using WallTime = std::chrono::system_clock::time_point;

// The page of a comparison. It loads no other file. Names and values of switches are escaped, and a
// content security policy allows only the script of the page.
std::string write_page(const PairReport &report);

// --- parts of pages ---

// Escapes a text for elements and quoted attributes.
std::string escape_html(std::string_view text, const char *comma = ",");

// Escapes a text and isolates its direction of writing. Lines may break after commas.
std::string isolate(std::string_view text);

// Isolates a text. A long text is folded: its summary is `what` and its beginning.
std::string fold_text(const std::string &text, const std::string &what = "");
std::string fold_vlans(const Vlans &vlans);

// The name of the switch, or its source if it has no name.
const std::string &name_side(const SideReport &side);

// "2026-11-24 09:30:00 +0100", in local time.
std::string describe_time(WallTime time);

// "Accepted: a reason"; empty if not accepted.
std::string describe_accepted(const std::optional<Acceptance> &accepted);

// A CSS class, and a sign that does not depend on colors.
struct Look {
  const char *name;
  const char *sign;
};
inline constexpr Look good_look = {"good", "="};
inline constexpr Look bad_look = {"bad", "≠"};
inline constexpr Look accepted_look = {"caution", "≈"};

// nullopt: the verdict is unknown.
const Look &find_look(std::optional<Outcome> outcome);

// The sign and a text.
std::string write_state_cell(const Look &look, const std::string &html);

// The first cell is the heading of the row.
std::string write_row(const std::string &attributes, const std::vector<std::string> &cells);

std::string write_table(const char *kind, const std::string &caption,
                        const std::vector<std::string> &columns, const std::string &rows);

struct Document {
  std::string title;
  const char *head = "";            // further elements
  const char *contacts = "'none'";  // CSP sources that the page may connect to
  Look look;
  std::string what;  // above the heading
  std::string heading;
  std::string header;  // below the heading
  std::string main;
};

std::string write_document(const Document &document);

// --- parts of a comparison ---

enum class ScopeClass { different, accepted, agreed };
using Scopes = std::vector<const ScopeReport *>;
Scopes select_scopes(const PairReport &report, ScopeClass wanted);

// "PortChannel10-69, PortChannel80 and 5 more", optionally as links to the tables of the groups.
std::string link_scopes(const Scopes &scopes, const PairReport &report, bool as_links = true);

std::string write_scope_tables(const PairReport &report, ScopeClass wanted);
std::string write_parameter_summary(const PairReport &report);

// The twin VLANs, and a grid and tables of the settings of all VLANs.
std::string write_vlan_section(const PairReport &report);

}  // namespace lab
