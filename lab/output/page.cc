#include "output/page.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/fix.h"
#include "output/notes.h"
#include "output/page_parts.h"
#include "output/page_text.h"
#include "output/page_vlans.h"
#include "output/pair_text.h"
#include "output/words.h"
#include "report/groups.h"
#include "report/summary.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "switch/values.h"
#include "text/hash.h"

namespace lab {
namespace {

// Of more scopes than these, only the first are named.
constexpr std::size_t scopes_named = 8;

// --- scopes ---

std::string page_title_of(const ScopeReport &scope) {
  return scope.scope.kind == PairScope::Kind::of_switch ? "Switch" : scope.scope.name;
}

bool is_bad(const ScopeReport &scope) {
  return !is_agreed(find_verdict(scope));
}

std::vector<const ScopeReport *> select_scopes(const PairReport &report, bool bad) {
  std::vector<const ScopeReport *> scopes;
  for (const ScopeReport &scope : report.checks) {
    if (is_bad(scope) == bad) scopes.push_back(&scope);
  }
  return scopes;
}

// The position of a scope in the report; the page's addresses of scopes are made of it.
std::ptrdiff_t number_of(const ScopeReport *scope, const PairReport &report) {
  return scope - report.checks.data();
}

// "PortChannel1, PortChannel2 and 5 more", each a link.
std::string name_scopes(const std::vector<const ScopeReport *> &scopes, const PairReport &report,
                        bool as_links) {
  std::vector<std::string> texts;
  for (const ScopeReport *scope : scopes) {
    if (texts.size() == scopes_named) {
      texts.push_back(fmt::format("{} more", scopes.size() - scopes_named));
      break;
    }
    const std::string name = isolated(page_title_of(*scope));
    texts.push_back(
        as_links ? fmt::format("<a href=\"#scope-{}\">{}</a>", number_of(scope, report), name)
                 : name);
  }
  return listed(texts);
}

// --- the verdict and the two switches ---

struct PageVerdict {
  std::string heading;
  std::string text;  // HTML
};

PageVerdict describe_disagreement(const PairReport &report) {
  const Summary summary = summarize(report.checks);
  const auto bad = select_scopes(report, true);
  std::vector<std::string> causes;
  for (const auto &[type, count] : summary.parameters) {
    if (!count.differ.empty()) causes.push_back(isolated(parameter_key(type)));
  }
  if (summary.missing[0] + summary.missing[1] > 0) causes.emplace_back("channels on one side only");
  if (summary.inconsistent > 0) causes.emplace_back("inconsistent ports");
  std::string text =
      fmt::format("{} of {} {}: {}.", bad.size(), count_of(summary.scopes, "scope"),
                  bad.size() == 1 ? "differs" : "differ", name_scopes(bad, report, true));
  if (!causes.empty()) text += " What differs: " + listed(causes) + ".";
  return {"The pair does not agree", text};
}

PageVerdict describe_page_verdict(const PairReport &report) {
  const bool agrees = is_agreed(find_verdict(report));
  const std::string heading = agrees ? "The pair agrees" : "The pair does not agree";
  const bool left_off = report.sides[0].spanning_tree == SpanningTree::off;
  const bool right_off = report.sides[1].spanning_tree == SpanningTree::off;
  if (left_off && right_off) {
    return {heading + ": spanning tree is off on both switches",
            "Nothing runs that could be compared, so no check was made."};
  }
  if (left_off || right_off) {
    return {heading + ": spanning tree is off on " + switch_names[left_off ? 0 : 1],
            "The other switch runs it. No check was made."};
  }
  if (!agrees) return describe_disagreement(report);
  const std::size_t scopes = report.checks.size();
  return {heading,
          scopes == 1 ? "The one scope agrees." : fmt::format("All {} scopes agree.", scopes)};
}

std::string name_side(const SideReport &side) {
  return side.name.empty() ? side.source : side.name;
}

std::string write_pair_table(const PairReport &report) {
  const auto &[left, right] = report.sides;
  std::string rows;
  const auto add = [&rows](const char *title, const std::string &of_left,
                           const std::string &of_right) {
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", title,
                        isolated(of_left), isolated(of_right));
  };
  add("Name", left.name, right.name);
  add("Source", left.source, right.source);
  add("Spanning tree", spanning_tree_name(left.spanning_tree),
      spanning_tree_name(right.spanning_tree));
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

std::string write_value(const ParameterReport &parameter, std::size_t side) {
  const auto text = find_value_texts(parameter)[side];
  if (!text) return "<span class=\"none\">not sent</span>";
  std::string html;
  if (parameter.values[0] && parameter.values[1] && parameter.values[0] != parameter.values[1]) {
    const Difference both = difference(parameter.type, *parameter.values[0], *parameter.values[1]);
    const std::string &only = side == 0 ? both.left : both.right;
    if (!only.empty()) html = fmt::format("<div class=\"only\">only here: {}</div>", folded(only));
  }
  html += folded(*text);
  if (parameter.digests && (*parameter.digests)[side]) {
    html += fmt::format("<div class=\"digest\">digest <code>{}</code></div>",
                        escaped(*(*parameter.digests)[side]));
  }
  return html;
}

// What differs has a sign of its own beside the words, for whoever sees no colours.
struct Sign {
  const char *look;
  const char *sign;
};

Sign find_sign(const ParameterReport &parameter) {
  if (is_different(parameter)) return {"bad", "≠"};
  const auto &[left, right] = parameter.states;
  if (left == State::same && right == State::same) return {"good", "="};
  return {"other", left == State::same_on_twins || right == State::same_on_twins ? "≈" : "–"};
}

std::string write_verdict_line(const ScopeReport &scope) {
  if (const auto missing = missing_side(scope)) {
    return fmt::format("only the {} switch has this channel", switch_names[1 - *missing]);
  }
  const std::string left = escaped(describe_code(scope, 0));
  const std::string right = escaped(describe_code(scope, 1));
  if (left != right) {
    return fmt::format("left: <code>{}</code>, right: <code>{}</code>", left, right);
  }
  if (scope.codes[0] != 0) return "both switches: <code>" + left + "</code>";
  return has_inconsistent_ports(scope) ? "inconsistent ports" : "agrees";
}

std::string write_ports(const ScopeReport &report) {
  const PairScope &scope = report.scope;
  const char *pod = report.on_pod ? " on a pod unit" : "";
  if (scope.kind == PairScope::Kind::of_switch || missing_side(report)) return pod;
  const std::string &left = scope.ends[0].port_name;
  const std::string &right = scope.ends[1].port_name;
  if (left != right) {
    return fmt::format(" ({} on left, {} on right){}", isolated(left), isolated(right), pod);
  }
  return (left != scope.name ? fmt::format(" ({})", isolated(left)) : "") + pod;
}

std::string write_inconsistent_ports(const ScopeReport &scope) {
  std::string rows;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      std::vector<std::string> keys;
      for (const uint16_t type : port.types) keys.push_back(parameter_key(type));
      rows += fmt::format(
          "<tr class=\"bad\"><td colspan=\"4\"><span aria-hidden=\"true\">≠</span> Inconsistent on "
          "the {}: port {} is not set like {}: {}</td></tr>\n",
          switch_names[side], isolated(port.name), isolated(scope.scope.ends[side].port_name),
          escaped(join(keys)));
    }
  }
  return rows;
}

std::string write_scope_table(const ScopeReport &scope, const PairReport &report) {
  const bool bad = is_bad(scope);
  std::string rows;
  for (const ParameterReport &parameter : scope.parameters) {
    const Sign sign = find_sign(parameter);
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td>{}</td><td>{}</td>"
        "<td class=\"state\"><span aria-hidden=\"true\">{}</span> {}</td></tr>\n",
        sign.look, escaped(parameter_key(parameter.type)), write_value(parameter, 0),
        write_value(parameter, 1), sign.sign, escaped(describe_states(parameter)));
    if (parameter.fix) {
      rows += fmt::format("<tr class=\"fix\"><td colspan=\"4\">Fix: {}</td></tr>\n",
                          isolated(describe_fix(parameter.fix->fix)));
    }
  }
  rows += write_inconsistent_ports(scope);
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
      number_of(&scope, report), isolated(page_title_of(scope)), write_ports(scope),
      bad ? "bad" : "good", bad ? "≠" : "=", write_verdict_line(scope),
      isolated(name_side(report.sides[0])), isolated(name_side(report.sides[1])), rows);
}

std::string write_scope_tables(const std::vector<const ScopeReport *> &scopes,
                               const PairReport &report) {
  std::string html;
  for (const ScopeReport *scope : scopes) html += write_scope_table(*scope, report);
  return html;
}

std::string write_agreeing_scopes(const PairReport &report) {
  const auto good = select_scopes(report, false);
  if (good.empty()) return "";
  return fmt::format("<details class=\"fold\"><summary>{}: {}</summary>\n{}</details>\n",
                     count_of(good.size(), "scope"), name_scopes(good, report, false),
                     write_scope_tables(good, report));
}

std::string write_summary(const PairReport &report) {
  std::string rows;
  for (const auto &[type, count] : summarize(report.checks).parameters) {
    const bool bad = !count.differ.empty();
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td class=\"state\"><span "
        "aria-hidden=\"true\">{}</span> {} of {}</td><td>{}</td></tr>\n",
        bad ? "bad" : "good", escaped(parameter_key(type)), bad ? "≠" : "=", count.differ.size(),
        count.scopes, bad ? name_scopes(count.differ, report, true) : "none");
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

std::string write_notes(const PairReport &report) {
  std::string items;
  for (const NoteGroup &group : group_notes(report.notes)) {
    const NoteReport &note = *group.note;
    items += fmt::format(
        "<li class=\"{}\">{}{}{}</li>\n", severity_name(note.note.kind),
        group.channels.empty() ? "" : isolated(group.channels) + ": ",
        isolated(describe_note(note, side_names(report))),
        note.accepted ? " Accepted: " + isolated(describe_acceptance(*note.accepted)) : "");
  }
  if (items.empty()) return "";
  return "<p>These do not change the verdict.</p>\n<ul>\n" + items + "</ul>\n";
}

}  // namespace

std::string write_page(const PairReport &report) {
  const PageVerdict verdict = describe_page_verdict(report);
  const bool agree = is_agreed(find_verdict(report));
  struct Section {
    const char *id;
    const char *title;
    std::string content;
  };
  const Section sections[] = {
      {"summary", "Summary by parameter", write_summary(report)},
      {"differ", "Scopes that differ", write_scope_tables(select_scopes(report, true), report)},
      {"agree", "Scopes that agree", write_agreeing_scopes(report)},
      {"vlans", "VLANs", write_vlan_section(report)},
      {"notes", "Notes", write_notes(report)}};
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
      hash_text(page_style), hash_text(page_script), verdict.heading,
      escaped(name_side(report.sides[0])), escaped(name_side(report.sides[1])), page_style,
      agree ? "good" : "bad", agree ? "=" : "≠", verdict.heading, verdict.text,
      write_pair_table(report), links, main, page_script);
}

}  // namespace lab
