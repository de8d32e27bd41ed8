#include "output/page.h"

#include <fmt/chrono.h>

#include <algorithm>

#include "output/page_parts.h"
#include "output/words.h"
#include "text/text.h"

namespace lab {
namespace {

// "2026-11-24 09:30:00 +0100", local time.
std::string describe_time(std::time_t time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S %z}", fmt::localtime(time));
}

// --- the verdict ---

std::string describe_heading(const PairReport &report) {
  const SideNames &names = side_names(report);
  std::vector<std::string> off;
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (report.sides[side].spanning_tree == SpanningTree::off) off.emplace_back(names[side]);
  }
  const Outcome outcome = find_verdict(report).outcome;
  return (outcome == Outcome::agree ? "The pair agrees"
          : outcome == Outcome::disagree
              ? "The pair does not agree"
              : std::string("Not compared: ") + describe_incomplete(report.incomplete[0].reason)) +
         (off.empty() ? "" : ": spanning tree is off on ") +
         (off.size() == 2 ? "both switches" : join(off));
}

// The paragraphs below the heading: what differs, and what the verdict depends on.
std::string describe_page_verdict(const PairReport &report) {
  const std::size_t count = report.checks.size();
  const Scopes different = select_scopes(report, ScopeClass::different);
  const Scopes accepted = select_scopes(report, ScopeClass::accepted);
  std::vector<std::string> texts;
  if (count == 0) {
    texts.emplace_back("No check was made.");
  } else if (different.empty()) {
    texts.push_back(count == 1 ? "The one scope agrees."
                               : fmt::format("All {} scopes agree.", count));
  } else {
    texts.push_back(
        fmt::format("{} of {} {}: {}. What differs: {}.", different.size(),
                    count_of(count, "scope"), different.size() == 1 ? "differs" : "differ",
                    link_scopes(different, report), isolated(describe_differences(report))));
  }
  for (const IncompleteReport &incomplete : report.incomplete) {
    texts.push_back(fmt::format("Not compared: {}.{}", describe_incomplete(incomplete.reason),
                                describe_accepted(incomplete.accepted)));
  }
  if (!accepted.empty()) {
    texts.push_back(fmt::format("Accepted differences make {} agree: {}.",
                                count_of(accepted.size(), "scope"), link_scopes(accepted, report)));
  }
  if (has_reason(find_verdict(report), Reason::warnings)) {
    texts.emplace_back("The comparison is strict, and <a href=\"#notes\">warnings</a> remain.");
  } else if (report.is_strict) {
    texts.emplace_back("The comparison is strict: a warning would make the pair disagree.");
  }
  return "<p>" + join(texts, "</p>\n<p>") + "</p>\n";
}

std::string write_pair_table(const PairReport &report) {
  std::string rows;
  const auto add = [&](const char *title, const auto &describe) {
    rows += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", title,
                        isolated(describe(report.sides[0])), isolated(describe(report.sides[1])));
  };
  add("Name", [](const SideReport &side) { return side.name; });
  add("Source", [](const SideReport &side) { return side.source; });
  add("File modified", [](const SideReport &side) {
    return side.modified ? describe_time(*side.modified) : "not a file";
  });
  add("Spanning tree",
      [](const SideReport &side) { return spanning_tree_name(side.spanning_tree); });
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
  const Scopes agreed = select_scopes(report, ScopeClass::agreed);
  if (agreed.empty()) return "";
  return fmt::format("<details class=\"fold\"><summary>{}: {}</summary>\n{}</details>\n",
                     count_of(agreed.size(), "scope"), link_scopes(agreed, report, false),
                     write_scope_tables(report, ScopeClass::agreed));
}

std::string write_notes(const PairReport &report) {
  std::string items;
  for (const NoteGroup &group : group_notes(report.notes)) {
    const NoteReport &note = *group.note;
    items += fmt::format("<li>{}: {}{} {}</li>\n", severity_name(note.note.kind),
                         group.channels.empty() ? "" : folded(group.channels) + ": ",
                         folded(describe_note(note, side_names(report))),
                         describe_accepted(note.accepted));
  }
  if (items.empty()) return "";
  return fmt::format("<p>{}</p>\n<ul>\n{}</ul>\n",
                     report.is_strict ? "A warning that is not accepted makes the pair disagree."
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
  for (const auto &[id, title, content] : sections) {
    if (content.empty()) continue;
    links += fmt::format("<li><a href=\"#{}\">{}</a></li>\n", id, title);
    main += fmt::format(R"(<section id="{0}" aria-labelledby="{0}-heading">
<h2 id="{0}-heading">{1}</h2>
{2}</section>
)",
                        id, title, content);
  }
  return fmt::format(R"(<nav aria-label="Sections"><ul>
{}</ul></nav>
<main id="main" tabindex="-1">
{}</main>
)",
                     links, main);
}

// Longer texts are folded, with so much of them before the fold.
constexpr std::size_t longest_text = 120;
constexpr std::size_t shown_of_longer = 60;

// The beginning of a long text; of a list, whole items.
std::string_view beginning_of(std::string_view text) {
  const std::string_view beginning = whole_characters(text, shown_of_longer);
  const std::size_t item = beginning.find_last_of(", ");
  return item == beginning.npos || item == 0 ? beginning : beginning.substr(0, item);
}

}  // namespace

std::string escaped(std::string_view text, const char *comma) {
  const std::pair<char, const char *> entities[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"},
                                                    {'"', "&quot;"}, {'\'', "&#39;"}, {',', comma}};
  std::string html;
  for (const char c : printable(text)) {
    const auto *entity = std::ranges::find(entities, c, &std::pair<char, const char *>::first);
    html += entity != std::end(entities) ? entity->second : std::string(1, c);
  }
  return html;
}

std::string isolated(std::string_view text) {
  return "<bdi>" + escaped(text, ",<wbr>") + "</bdi>";
}

std::string folded(const std::string &text, const std::string &what) {
  if (text.size() <= longest_text) return isolated(text);
  return fmt::format("<details><summary>{}{}…</summary>{}</details>", what,
                     isolated(beginning_of(text)), isolated(text));
}

std::string folded(const Vlans &vlans) {
  return folded(vlan_text(vlans), count_of(vlans.count(), "VLAN") + ": ");
}

const std::string &name_side(const SideReport &side) {
  return side.name.empty() ? side.source : side.name;
}

std::string describe_accepted(const std::optional<Acceptance> &accepted) {
  return accepted ? "Accepted: " + isolated(describe_acceptance(*accepted)) : "";
}

std::string write_page(const PairReport &report) {
  constexpr Look looks[] = {{"good", "="}, {"bad", "≠"}, {"incomplete", "?"}};
  const Look &look = looks[std::size_t(find_verdict(report).outcome)];
  const std::string heading = describe_heading(report);
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
<div class="verdict">{}</div>
{}</header>
{}<script>{}</script>
</body>
</html>
)",
      hash_text(page_style), hash_text(page_script), heading, escaped(name_side(report.sides[0])),
      escaped(name_side(report.sides[1])), page_style, look.name,
      report.is_intended ? "a switch, compared with its intended state" : "two switches",
      describe_time(std::time(nullptr)), LAB_VERSION, look.sign, heading,
      describe_page_verdict(report), write_pair_table(report), write_sections(report), page_script);
}

}  // namespace lab
