#include "output/page.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <ctime>

#include "output/notes.h"
#include "output/page_parts.h"
#include "output/page_scopes.h"
#include "output/page_text.h"
#include "output/page_vlans.h"
#include "output/pair_text.h"
#include "output/words.h"
#include "report/groups.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "text/hash.h"

namespace lab {
namespace {

// "2026-11-24 09:30:00 +0100", local time.
std::string describe_time(std::time_t time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S %z}", fmt::localtime(time));
}

// --- the verdict ---

struct PageVerdict {
  std::string heading;
  std::string text;  // HTML
};

std::string describe_difference(const PairReport &report) {
  const auto different = select_scopes(report, ScopeClass::different);
  if (different.empty()) return "";
  const Summary summary = summarize(report.checks);
  std::vector<std::string> causes;
  for (const auto &[type, count] : summary.parameters) {
    if (!count.differ.empty()) causes.push_back(isolated(parameter_key(type)));
  }
  if (summary.missing[0] + summary.missing[1] > 0) causes.emplace_back("channels on one side only");
  if (summary.inconsistent > 0) causes.emplace_back("inconsistent ports");
  const std::string text =
      fmt::format("{} of {} {}: {}.", different.size(), count_of(report.checks.size(), "scope"),
                  different.size() == 1 ? "differs" : "differ", link_scopes(different, report));
  return causes.empty() ? text : text + " What differs: " + listed(causes) + ".";
}

std::string describe_agreement(const PairReport &report) {
  const std::size_t scopes = report.checks.size();
  return scopes == 1 ? "The one scope agrees." : fmt::format("All {} scopes agree.", scopes);
}

// What the verdict depends on, below its heading.
std::string describe_conditions(const PairReport &report) {
  std::string html;
  const auto add = [&html](const std::string &text) { html += "<p>" + text + "</p>\n"; };
  const Verdict verdict = find_verdict(report);
  for (const IncompleteReport &incomplete : report.incomplete) {
    add(std::string("Not compared: ") + describe_incomplete(incomplete.reason) + "." +
        (incomplete.accepted
             ? " Accepted: " + isolated(describe_acceptance(*incomplete.accepted)) + "."
             : ""));
  }
  if (const auto accepted = select_scopes(report, ScopeClass::accepted); !accepted.empty()) {
    add(fmt::format("Accepted differences make {} agree: {}.", count_of(accepted.size(), "scope"),
                    link_scopes(accepted, report)));
  }
  if (report.is_strict) {
    const bool remain = std::find(verdict.reasons.begin(), verdict.reasons.end(),
                                  Reason::warnings) != verdict.reasons.end();
    add(remain ? "The comparison is strict, and <a href=\"#notes\">warnings</a> remain."
               : "The comparison is strict: a warning would make the pair disagree.");
  }
  return html;
}

PageVerdict describe_page_verdict(const PairReport &report) {
  const Outcome outcome = find_verdict(report).outcome;
  const bool left_off = report.sides[0].spanning_tree == SpanningTree::off;
  const bool right_off = report.sides[1].spanning_tree == SpanningTree::off;
  const std::string heading =
      outcome == Outcome::agree ? "The pair agrees"
      : outcome == Outcome::disagree
          ? "The pair does not agree"
          : std::string("Not compared: ") + describe_incomplete(report.incomplete.front().reason);
  if (left_off && right_off) {
    return {heading + ": spanning tree is off on both switches",
            "Nothing runs that could be compared, so no check was made."};
  }
  if (left_off || right_off) {
    return {heading + ": spanning tree is off on " + side_names(report)[left_off ? 0 : 1],
            "The other switch runs it. No check was made."};
  }
  const std::string difference = describe_difference(report);
  return {heading, difference.empty() ? describe_agreement(report) : difference};
}

// --- the two switches ---

std::string write_pair_table(const PairReport &report) {
  const auto &[left, right] = report.sides;
  std::string rows;
  const auto add = [&rows](const char *title, const std::string &of_left,
                           const std::string &of_right) {
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", title,
                        isolated(of_left), isolated(of_right));
  };
  const auto modified = [](const SideReport &side) {
    return side.modified ? describe_time(*side.modified) : "not a file";
  };
  add("Name", left.name, right.name);
  add("Source", left.source, right.source);
  add("File modified", modified(left), modified(right));
  add("Spanning tree", spanning_tree_name(left.spanning_tree),
      spanning_tree_name(right.spanning_tree));
  return fmt::format(R"(<table class="pair">
<caption class="unseen">The two switches</caption>
<thead><tr><td></td><th scope="col">{}</th><th scope="col">{}</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     side_names(report)[0], side_names(report)[1], rows);
}

// --- sections ---

std::string write_agreeing_scopes(const PairReport &report) {
  const auto agreed = select_scopes(report, ScopeClass::agreed);
  if (agreed.empty()) return "";
  return fmt::format("<details class=\"fold\"><summary>{}: {}</summary>\n{}</details>\n",
                     count_of(agreed.size(), "scope"), link_scopes(agreed, report, false),
                     write_scope_tables(report, ScopeClass::agreed));
}

std::string write_notes(const PairReport &report) {
  std::string items;
  for (const NoteGroup &group : group_notes(report.notes)) {
    const NoteReport &note = *group.note;
    items += fmt::format(
        "<li>{}{}: {}{}{}</li>\n", note.accepted ? "accepted " : "", severity_name(note.note.kind),
        group.channels.empty() ? "" : folded(group.channels) + ": ",
        folded(describe_note(note, side_names(report))),
        note.accepted ? " Accepted: " + isolated(describe_acceptance(*note.accepted)) : "");
  }
  if (items.empty()) return "";
  return fmt::format("<p>{}</p>\n<ul>\n{}</ul>\n",
                     report.is_strict ? "The comparison is strict: a warning that is not accepted "
                                        "makes the pair disagree."
                                      : "These do not change the verdict.",
                     items);
}

std::string write_sections(const PairReport &report) {
  struct Section {
    const char *id;
    const char *title;
    std::string content;
  };
  const Section sections[] = {
      {"summary", "Summary by parameter", write_parameter_summary(report)},
      {"differ", "Scopes that differ", write_scope_tables(report, ScopeClass::different)},
      {"accepted", "Scopes with accepted differences",
       write_scope_tables(report, ScopeClass::accepted)},
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
  return fmt::format(R"(<nav aria-label="Sections"><ul>
{}</ul></nav>
<main id="main" tabindex="-1">
{}</main>
)",
                     links, main);
}

// How an outcome looks: the header's class, and a sign for whoever sees no colours.
struct Look {
  const char *name;
  const char *sign;
};
constexpr Look outcome_looks[] = {{"good", "="}, {"bad", "≠"}, {"incomplete", "?"}};

}  // namespace

std::string write_page(const PairReport &report) {
  const PageVerdict verdict = describe_page_verdict(report);
  const Look &look = outcome_looks[std::size_t(find_verdict(report).outcome)];
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
<p class="what">Spanning-tree settings of {}. Generated {} by mcec-lab {}.</p>
<h1><span aria-hidden="true">{}</span> {}</h1>
<div class="verdict"><p>{}</p>
{}</div>
{}</header>
{}<script>{}</script>
</body>
</html>
)",
      hash_text(page_style), hash_text(page_script), verdict.heading,
      escaped(name_side(report.sides[0])), escaped(name_side(report.sides[1])), page_style,
      look.name, report.is_intended ? "a switch, compared with its intended state" : "two switches",
      describe_time(std::time(nullptr)), LAB_VERSION, look.sign, verdict.heading, verdict.text,
      describe_conditions(report), write_pair_table(report), write_sections(report), page_script);
}

}  // namespace lab
