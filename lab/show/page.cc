#include "show/page.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

#include "language/told.h"
#include "language/vlans.h"
#include "show/page_parts.h"
#include "show/words.h"

namespace lab {
namespace {

constexpr const char *sides[] = {"left", "right"};

// Values longer than this are folded, with so much of them before the fold.
constexpr std::size_t longest_value = 160;
constexpr std::size_t told_of_longer = 60;
// Of more scopes than these, only the first are named.
constexpr std::size_t scopes_named = 8;
// Longer tables of VLANs are folded.
constexpr std::size_t most_open_rows = 40;

// --- text ---

// A text from outside, safe in an element and in quotation marks. Long lists may break at commas.
std::string escaped(std::string_view text, const char *comma = ",") {
  const std::pair<char, const char *> entities[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"},
                                                    {'"', "&quot;"}, {'\'', "&#39;"}, {',', comma}};
  std::string out;
  for (const char c : printable(text)) {
    const auto entity = std::find_if(std::begin(entities), std::end(entities),
                                     [c](const auto &candidate) { return candidate.first == c; });
    if (entity == std::end(entities)) {
      out += c;
    } else {
      out += entity->second;
    }
  }
  return out;
}

// The same in a direction of writing of its own, so that it does not turn the text around it.
std::string said(std::string_view text) {
  return "<bdi>" + escaped(text, ",<wbr>") + "</bdi>";
}

const Json &field(const Json &object, const char *key) {
  static const Json nothing;
  if (!object.is_object()) return nothing;
  const auto found = object.find(key);
  return found != object.end() ? *found : nothing;
}

std::string text_at(const Json &object, const char *key) {
  const Json &value = field(object, key);
  return value.is_string() ? value.get<std::string>() : "";
}

std::string counted(std::size_t count, const char *what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// "a, b and c".
std::string listed(const std::vector<std::string> &texts) {
  std::string out;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) out += i + 1 == texts.size() ? " and " : ", ";
    out += texts[i];
  }
  return out;
}

// --- the document ---

std::string title_of(const Json &check) {
  const std::string scope = text_at(check, "scope");
  return scope == "switch" ? "Switch" : scope;
}

bool differs(const Json &check) {
  if (field(check, "only").is_string()) return true;
  const Json &verdicts = field(check, "verdicts");
  return std::any_of(verdicts.begin(), verdicts.end(),
                     [](const Json &verdict) { return field(verdict, "code") != 0; });
}

// Where in the document a scope stands; the page's addresses of scopes are made of it.
struct Scope {
  std::size_t number;
  const Json *check;
};

std::vector<Scope> scopes_that(const Json &document, bool differ) {
  std::vector<Scope> scopes;
  const Json &checks = field(document, "checks");
  for (std::size_t i = 0; i < checks.size(); ++i) {
    if (differs(checks[i]) == differ) scopes.push_back({i, &checks[i]});
  }
  return scopes;
}

// "PortChannel1, PortChannel2 and 5 more".
std::string named(const std::vector<Scope> &scopes, bool as_links) {
  std::vector<std::string> texts;
  for (const Scope &scope : scopes) {
    if (texts.size() == scopes_named) {
      texts.push_back(fmt::format("{} more", scopes.size() - scopes_named));
      break;
    }
    const std::string name = said(title_of(*scope.check));
    texts.push_back(as_links ? fmt::format("<a href=\"#scope-{}\">{}</a>", scope.number, name)
                             : name);
  }
  return listed(texts);
}

// The parameters in the order in which they are met, with the scopes in which each differs, and in
// how many it stands at all.
struct Summed {
  std::string parameter;
  std::vector<Scope> differ;
  std::size_t scopes = 0;
};

std::vector<Summed> summed(const Json &document) {
  std::vector<Summed> sums;
  const Json &checks = field(document, "checks");
  for (std::size_t i = 0; i < checks.size(); ++i) {
    for (const Json &row : field(checks[i], "parameters")) {
      const std::string parameter = text_at(row, "parameter");
      auto sum = std::find_if(sums.begin(), sums.end(), [&](const Summed &candidate) {
        return candidate.parameter == parameter;
      });
      if (sum == sums.end()) sum = sums.insert(sum, {parameter, {}});
      if (is_out_of_step(row)) sum->differ.push_back({i, &checks[i]});
      ++sum->scopes;
    }
  }
  return sums;
}

// --- the verdict and the two switches ---

struct Verdict {
  std::string heading;
  std::string text;  // HTML
};

Verdict verdict_of(const Json &document) {
  const bool agree = field(document, "agree") == true;
  std::string heading = agree ? "The pair agrees" : "The pair does not agree";
  std::vector<std::string> off;
  for (const char *side : sides) {
    if (text_at(field(document, side), "spanning-tree") == "off") off.push_back(side);
  }
  if (off.size() == 2) {
    return {heading + ": spanning tree is off on both switches",
            "Nothing runs that could be compared, so no check was made."};
  }
  if (off.size() == 1) {
    return {heading + ": spanning tree is off on " + off[0],
            "The other switch runs it. No check was made."};
  }
  const std::vector<Scope> differ = scopes_that(document, true);
  const std::size_t scopes = field(document, "checks").size();
  if (scopes == 0) return {heading, "No check was made."};
  if (differ.empty()) {
    return {heading,
            scopes == 1 ? "The one scope agrees." : fmt::format("All {} scopes agree.", scopes)};
  }
  std::vector<std::string> parameters;
  for (const Summed &sum : summed(document)) {
    if (!sum.differ.empty()) parameters.push_back(said(sum.parameter));
  }
  std::string text = fmt::format("{} of {} {}: {}.", differ.size(), counted(scopes, "scope"),
                                 differ.size() == 1 ? "differs" : "differ", named(differ, true));
  if (!parameters.empty()) text += " What differs: " + listed(parameters) + ".";
  return {heading, text};
}

std::string name_of(const Json &document, const char *side) {
  const std::string name = text_at(field(document, side), "name");
  return name.empty() ? text_at(field(document, side), "source") : name;
}

std::string pair_table(const Json &document) {
  std::string rows;
  for (const auto &[key, title] : {std::pair{"name", "Name"}, std::pair{"source", "Source"},
                                   std::pair{"spanning-tree", "Spanning tree"}}) {
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", title,
                        said(text_at(field(document, "left"), key)),
                        said(text_at(field(document, "right"), key)));
  }
  return fmt::format(R"(<table class="pair">
<caption class="unseen">The two switches</caption>
<thead><tr><td></td><th scope="col">left</th><th scope="col">right</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     rows);
}

// --- a table a scope ---

std::string folded(const std::string &text) {
  if (text.size() <= longest_value) return said(text);
  std::size_t end = 0;
  while (end < told_of_longer) {
    end += std::max<std::size_t>(1, character_bytes(std::string_view(text).substr(end)));
  }
  return fmt::format("<details><summary>{}…</summary>{}</details>", said(text.substr(0, end)),
                     said(text));
}

std::string value_of(const Json &row, const char *side) {
  if (!field(row, side).is_string()) return "<span class=\"none\">not sent</span>";
  std::string html;
  if (const std::string only = text_at(field(row, "difference"), side); !only.empty()) {
    html += fmt::format("<div class=\"only\">only here: {}</div>", folded(only));
  }
  html += folded(text_at(row, side));
  if (const std::string digest = text_at(field(row, "digest"), side); !digest.empty()) {
    html += fmt::format("<div class=\"digest\">digest <code>{}</code></div>", escaped(digest));
  }
  return html;
}

std::string cure_text(const Json &row) {
  const std::string text = text_at(field(row, "cure"), "text");
  return text.empty() ? text_at(row, "cure-text") : text;
}

// What differs has a sign of its own beside the words, for whoever sees no colours.
struct Sign {
  const char *look;
  const char *sign;
};

Sign sign_of(const Json &row, const std::string &state) {
  if (is_out_of_step(row)) return {"bad", "≠"};
  if (state == "same") return {"good", "="};
  return {"other", state.starts_with("same") ? "≈" : "–"};
}

std::string verdict_line(const Json &check) {
  if (const std::string only = text_at(check, "only"); !only.empty()) {
    return fmt::format("only the {} switch has this channel", escaped(only));
  }
  std::vector<std::string> verdicts;
  for (const char *side : sides) verdicts.push_back(verdict_text(check, side));
  if (verdicts[0] == verdicts[1]) {
    return differs(check) ? "both switches: <code>" + escaped(verdicts[0]) + "</code>" : "agrees";
  }
  return fmt::format("left: <code>{}</code>, right: <code>{}</code>", escaped(verdicts[0]),
                     escaped(verdicts[1]));
}

std::string ports_text(const Json &check) {
  std::string text;
  const Json &ports = field(check, "ports");
  const std::string left = text_at(ports, "left");
  const std::string right = text_at(ports, "right");
  const std::string scope = text_at(check, "scope");
  if (left != right && !left.empty() && !right.empty()) {
    text = fmt::format(" ({} on left, {} on right)", said(left), said(right));
  } else if (!left.empty() && left != scope) {
    text = fmt::format(" ({})", said(left));
  }
  return text + (field(check, "pod") == true ? " on a pod unit" : "");
}

std::string scope_table(const Scope &scope, const Json &document) {
  const Json &check = *scope.check;
  const bool is_bad = differs(check);
  std::string rows;
  for (const Json &row : field(check, "parameters")) {
    const std::string state = state_text(row);
    const Sign sign = sign_of(row, state);
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td>{}</td><td>{}</td>"
        "<td class=\"state\"><span aria-hidden=\"true\">{}</span> {}</td></tr>\n",
        sign.look, escaped(text_at(row, "parameter")), value_of(row, "left"),
        value_of(row, "right"), sign.sign, escaped(state));
    if (const std::string cure = cure_text(row); !cure.empty()) {
      rows += fmt::format("<tr class=\"cure\"><td colspan=\"4\">Cure: {}</td></tr>\n", said(cure));
    }
  }
  if (rows.empty()) {
    rows = "<tr><td colspan=\"4\">neither switch has a parameter to send</td></tr>\n";
  }
  return fmt::format(
      R"(<table class="scope" id="scope-{}">
<caption><h3>{}{}</h3> <span class="{}"><span aria-hidden="true">{}</span> {}</span></caption>
<thead><tr><th scope="col">parameter</th><th scope="col">left <small>{}</small></th>)"
      R"(<th scope="col">right <small>{}</small></th><th scope="col">comparison</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
      scope.number, said(title_of(check)), ports_text(check), is_bad ? "bad" : "good",
      is_bad ? "≠" : "=", verdict_line(check), said(name_of(document, "left")),
      said(name_of(document, "right")), rows);
}

std::string scope_tables(const std::vector<Scope> &scopes, const Json &document) {
  std::string html;
  for (const Scope &scope : scopes) html += scope_table(scope, document);
  return html;
}

std::string differing_scopes(const Json &document) {
  return scope_tables(scopes_that(document, true), document);
}

std::string agreeing_scopes(const Json &document) {
  const std::vector<Scope> agree = scopes_that(document, false);
  if (agree.empty()) return "";
  return fmt::format("<details class=\"fold\"><summary>{}: {}</summary>\n{}</details>\n",
                     counted(agree.size(), "scope"), named(agree, false),
                     scope_tables(agree, document));
}

std::string summary(const Json &document) {
  std::string rows;
  for (const Summed &sum : summed(document)) {
    const bool is_bad = !sum.differ.empty();
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td class=\"state\"><span "
        "aria-hidden=\"true\">{}</span> {} of {}</td><td>{}</td></tr>\n",
        is_bad ? "bad" : "good", escaped(sum.parameter), is_bad ? "≠" : "=", sum.differ.size(),
        sum.scopes, is_bad ? named(sum.differ, true) : "none");
  }
  if (rows.empty()) return "";
  return fmt::format(R"(<table class="summary">
<caption class="unseen">In how many scopes each parameter differs</caption>
<thead><tr><th scope="col">parameter</th><th scope="col">scopes that differ</th>)"
                     R"(<th scope="col">which</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     rows);
}

// --- VLANs ---

// What one switch says of each VLAN: its instance, or one of these.
enum : int { not_told = -3, enabled = -2, disabled = -1 };
using Facts = std::vector<int>;

std::string fact_text(int fact) {
  constexpr const char *words[] = {"not told", "enabled", "disabled"};
  return fact < 0 ? words[fact - not_told] : fmt::format("instance {}", fact);
}

// "10,20-30", "None".
std::optional<Facts> facts_of_disabled(const std::string &text) {
  const ParsedRanges parsed = parse_vlans(text);
  if (text.empty() || parsed.fault != RangeFault::none) return std::nullopt;
  const Vlans vlans = vlans_of(parsed.ranges);
  Facts facts(vlan_count, enabled);
  for (std::size_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (vlans[vlan]) facts[vlan] = disabled;
  }
  return facts;
}

// "1: 10-20; 2: 30", "all VLANs in instance 0".
std::optional<Facts> facts_of_map(const std::string &text) {
  Facts facts(vlan_count, 0);
  if (text.empty()) return std::nullopt;
  if (text == "all VLANs in instance 0") return facts;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find("; ", at), text.size());
    const std::string_view part = std::string_view(text).substr(at, end - at);
    const std::size_t colon = std::min(part.find(": "), part.size());
    const auto instance = parse_number(part.substr(0, colon));
    const ParsedRanges parsed = parse_vlans(part.substr(std::min(colon + 2, part.size())));
    if (!instance || parsed.fault != RangeFault::none) return std::nullopt;
    for (const auto &[first, last] : parsed.ranges) {
      std::fill(facts.begin() + first, facts.begin() + last + 1, static_cast<int>(*instance));
    }
    at = end + 2;
  }
  return facts;
}

// What both switches say of the VLANs, by the parameter that they compare; where they send different
// ones, each by its own.
struct Compared {
  std::array<Facts, 2> facts;
  bool is_same = false;  // the parameter that they send
  bool counts = false;   // does it make the verdict?
};

std::optional<Compared> compared_vlans(const Json &check) {
  Compared own{{Facts(vlan_count, not_told), Facts(vlan_count, not_told)}};
  std::optional<Compared> both;
  bool is_told = false;
  for (const Json &row : field(check, "parameters")) {
    const std::string parameter = text_at(row, "parameter");
    const bool is_map = parameter == "mst-region-vi-map";
    if (!is_map && parameter != "stp-endis") continue;
    std::array<std::optional<Facts>, 2> told;
    for (std::size_t side = 0; side < 2; ++side) {
      const std::string text = text_at(row, sides[side]);
      told[side] = is_map ? facts_of_map(text) : facts_of_disabled(text);
      if (told[side]) own.facts[side] = *told[side];
      is_told = is_told || told[side];
    }
    const bool counts = state_text(row).find("not compared") == std::string::npos;
    if (told[0] && told[1] && (!both || (counts && !both->counts))) {
      both = {{*told[0], *told[1]}, true, counts};
    }
  }
  if (both) return both;
  return is_told ? std::optional(own) : std::nullopt;
}

struct VlanState {
  const char *key;
  const char *words;
};

// Those that an operator looks for stand first.
constexpr VlanState vlan_states[] = {{"fail", "twin VLAN, fails"},
                                     {"different", "different"},
                                     {"apart", "differs, but is not compared"},
                                     {"unlike", "not compared"},
                                     {"pass", "twin VLAN, passes"},
                                     {"same", "same"}};
enum VlanStateIndex { fail, different, apart, unlike, pass, same };

Vlans vlans_at(const Json &check, const char *key) {
  const ParsedRanges parsed = parse_vlans(text_at(check, key));
  return parsed.fault == RangeFault::none ? vlans_of(parsed.ranges) : Vlans{};
}

// The VLANs of which the same is to be said.
using VlanGroups = std::map<std::tuple<VlanStateIndex, int, int>, Vlans>;

VlanGroups vlan_groups(const Json &check, const Compared &compared) {
  const Vlans passes = vlans_at(check, "pass");
  const Vlans fails = vlans_at(check, "fail");
  VlanGroups groups;
  for (std::size_t vlan = 0; vlan < vlan_count; ++vlan) {
    const int left = compared.facts[0][vlan];
    const int right = compared.facts[1][vlan];
    const bool is_map = left >= 0 && right >= 0;
    const VlanStateIndex state = fails[vlan]                 ? fail
                                 : passes[vlan]              ? pass
                                 : !compared.is_same         ? unlike
                                 : left == right             ? same
                                 : is_map && compared.counts ? different
                                                             : apart;
    groups[{state, left, right}].set(vlan);
  }
  return groups;
}

// Rows of VLANs, folded when they are many or `fold` says so.
std::string vlan_table(const char *caption, const std::vector<std::string> &rows, bool fold) {
  if (rows.empty()) return "";
  std::string body;
  for (const std::string &row : rows) body += row;
  return fmt::format(R"(<details class="fold"{}><summary>{}</summary>
<table class="vlans">
<caption class="unseen">{}</caption>
<thead><tr><th scope="col">VLANs</th><th scope="col">left</th><th scope="col">right</th>)"
                     R"(<th scope="col">comparison</th></tr></thead>
<tbody>
{}</tbody>
</table></details>
)",
                     fold || rows.size() > most_open_rows ? "" : " open", caption, caption, body);
}

std::string vlans(const Json &document) {
  const Json &checks = field(document, "checks");
  const Json &check = checks.empty() ? checks : checks.front();
  const auto text_or_none = [](const std::string &text) {
    return text.empty() ? "none" : folded(text);
  };
  std::string lists =
      fmt::format("<dt>Twin VLANs</dt><dd>{}</dd>", text_or_none(text_at(document, "twin-vlans")));
  for (const auto &[key, title] :
       {std::pair{"pass", "Twin VLANs that pass"}, std::pair{"fail", "Twin VLANs that fail"}}) {
    if (!field(check, key).is_string()) continue;
    lists += fmt::format("<dt>{}</dt><dd>{}</dd>", title, text_or_none(text_at(check, key)));
  }
  std::string html = "<dl>" + lists + "</dl>\n";
  const auto compared = compared_vlans(check);
  if (!compared) return html;

  std::vector<std::string> unequal;
  std::vector<std::string> equal;
  for (const auto &[facts, vlans] : vlan_groups(check, *compared)) {
    const auto &[state, left, right] = facts;
    (left == right ? equal : unequal)
        .push_back(fmt::format("<tr data-state=\"{}\"><th "
                               "scope=\"row\">{}</th><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                               vlan_states[state].key, escaped(vlan_text(vlans), ",<wbr>"),
                               fact_text(left), fact_text(right), vlan_states[state].words));
  }
  html += R"(<figure id="picture" hidden>
<figcaption id="picture-caption">The 4,096 VLANs, 64 in a row</figcaption>
<p id="named" role="status">Point at a VLAN, or tab into the grid and use the arrow keys.</p>
<div class="scroll"><div id="grid" role="grid" aria-labelledby="picture-caption" )"
          R"(aria-readonly="true"></div></div>
<ul id="legend" aria-label="Legend of the grid"></ul>
</figure>
<noscript><p>The picture of the VLANs needs a script; the tables say the same.</p></noscript>
)";
  return html + vlan_table("VLANs of which the switches say different things", unequal, false) +
         vlan_table("VLANs of which both switches say the same", equal, true);
}

std::string notes(const Json &document) {
  std::string items;
  for (const Json &note : field(document, "notes")) {
    if (note.is_string()) items += "<li>" + said(note.get<std::string>()) + "</li>\n";
  }
  if (items.empty()) return "";
  return "<p>These do not change the verdict.</p>\n<ul>\n" + items + "</ul>\n";
}

}  // namespace

std::string page_of(const Json &document) {
  const Verdict verdict = verdict_of(document);
  const bool agree = field(document, "agree") == true;
  struct Section {
    const char *id;
    const char *title;
    std::string content;
  };
  const Section sections[] = {{"summary", "Summary by parameter", summary(document)},
                              {"differ", "Scopes that differ", differing_scopes(document)},
                              {"agree", "Scopes that agree", agreeing_scopes(document)},
                              {"vlans", "VLANs", vlans(document)},
                              {"notes", "Notes", notes(document)}};
  std::string links;
  std::string main;
  for (const Section &section : sections) {
    if (section.content.empty()) continue;
    links += fmt::format("<li><a href=\"#{}\">{}</a></li>\n", section.id, section.title);
    main += fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-heading\">\n"
        "<h2 id=\"{0}-heading\">{1}</h2>\n{2}</section>\n",
        section.id, section.title, section.content);
  }
  return fmt::format(
      R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; )"
      R"(style-src 'sha256-{}'; script-src 'sha256-{}'; base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{}: {} and {}</title>
<style>{}</style>
</head>
<body>
<a class="skip" href="#main">Skip to the comparison</a>
<header class="{}">
<p class="what">Spanning-tree settings of two switches</p>
<h1><span aria-hidden="true">{}</span> {}</h1>
<p class="verdict">{}</p>
{}</header>
<nav aria-label="Sections"><ul>
{}</ul></nav>
<main id="main" tabindex="-1">
{}</main>
<script>{}</script>
</body>
</html>
)",
      page_style_hash, page_script_hash, verdict.heading, escaped(name_of(document, "left")),
      escaped(name_of(document, "right")), page_style, agree ? "good" : "bad", agree ? "=" : "≠",
      verdict.heading, verdict.text, pair_table(document), links, main, page_script);
}

}  // namespace lab
