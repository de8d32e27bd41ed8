#include "output/page.h"

#include <fmt/chrono.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "output/page_parts.h"
#include "output/words.h"
#include "text/text.h"

namespace lab {
namespace {

// --- the verdict ---

std::string describe_heading(const PairReport &report) {
  const std::vector<std::string> off = list_sides_off(report, side_names(report));
  const Outcome outcome = find_outcome(report);
  return (outcome == Outcome::agree ? "The pair agrees"
          : outcome == Outcome::disagree
              ? "The pair does not agree"
              : std::string("Not compared: ") + describe_incomplete(report.incomplete[0].reason)) +
         (off.empty() ? "" : ": spanning tree is off on ") +
         (off.size() == 2 ? "both switches" : join(off));
}

// The paragraphs below the heading.
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
                    format_count(count, "scope"), different.size() == 1 ? "differs" : "differ",
                    link_scopes(different, report), isolate(describe_differences(report))));
  }
  for (const IncompleteReport &incomplete : report.incomplete) {
    texts.push_back(fmt::format("Not compared: {}. {}", describe_incomplete(incomplete.reason),
                                describe_accepted(incomplete.accepted)));
  }
  if (!accepted.empty()) {
    texts.push_back(fmt::format("Accepted differences make {} agree: {}.",
                                format_count(accepted.size(), "scope"),
                                link_scopes(accepted, report)));
  }
  if (find_reasons(report).contains(Reason::warnings)) {
    texts.emplace_back("The comparison is strict, and <a href=\"#notes\">warnings</a> remain.");
  } else if (report.is_strict) {
    texts.emplace_back("The comparison is strict: a warning would make the pair disagree.");
  }
  return "<p>" + join(texts, "</p>\n<p>") + "</p>\n";
}

std::string write_pair_table(const PairReport &report) {
  std::string rows;
  const auto add = [&](const char *title, const auto &describe) {
    rows += write_row(
        "", {title, isolate(describe(report.sides[0])), isolate(describe(report.sides[1]))});
  };
  add("Name", [](const SideReport &side) { return side.name; });
  add("Source", [](const SideReport &side) { return side.source; });
  add("File modified", [](const SideReport &side) {
    return side.modified ? describe_time(std::chrono::system_clock::from_time_t(*side.modified))
                         : "not a file";
  });
  add("Spanning tree",
      [](const SideReport &side) { return spanning_tree_name(side.spanning_tree); });
  const auto &[left, right] = side_names(report);
  return write_table("pair", "The two switches", {"switch", left, right}, rows);
}

// --- sections ---

std::string write_agreeing_scopes(const PairReport &report) {
  const Scopes agreed = select_scopes(report, ScopeClass::agreed);
  if (agreed.empty()) return "";
  return fmt::format("<details class=\"fold\"><summary>{}: {}</summary>\n{}</details>\n",
                     format_count(agreed.size(), "scope"), link_scopes(agreed, report, false),
                     write_scope_tables(report, ScopeClass::agreed));
}

std::string write_notes(const PairReport &report) {
  std::string items;
  for (const NoteGroup &group : group_notes(report.notes)) {
    const Note &note = *group.note;
    items += fmt::format(
        "<li>{}: {}{} {}</li>\n", severity_name(note.kind),
        group.channels.empty() ? "" : fold_text(join_ranges(group.channels)) + ": ",
        fold_text(describe_note(note, side_names(report))), describe_accepted(note.accepted));
  }
  if (items.empty()) return "";
  return fmt::format("<p>{}</p>\n<ul>\n{}</ul>\n",
                     report.is_strict ? "A warning that is not accepted makes the pair disagree."
                                      : "Notes do not change the verdict.",
                     items);
}

constexpr std::size_t max_unfolded = 120;
constexpr std::size_t fold_summary = 60;

// The first characters of a long text; the first items of a list.
std::string_view find_beginning(std::string_view text) {
  const std::string_view beginning = whole_characters(text, fold_summary);
  const std::size_t item = beginning.find_last_of(", ");
  return item == beginning.npos || item == 0 ? beginning : beginning.substr(0, item);
}

}  // namespace

std::string escape_html(std::string_view text, const char *comma) {
  const std::pair<char, const char *> entities[] = {{'&', "&amp;"},  {'<', "&lt;"},   {'>', "&gt;"},
                                                    {'"', "&quot;"}, {'\'', "&#39;"}, {',', comma}};
  std::string html;
  for (const char c : printable(text)) {
    const auto *entity = std::ranges::find(entities, c, &std::pair<char, const char *>::first);
    html += entity != std::end(entities) ? entity->second : std::string(1, c);
  }
  return html;
}

std::string isolate(std::string_view text) {
  return "<bdi>" + escape_html(text, ",<wbr>") + "</bdi>";
}

std::string fold_text(const std::string &text, const std::string &what) {
  if (text.size() <= max_unfolded) return isolate(text);
  return fmt::format("<details><summary>{}{}…</summary>{}</details>", what,
                     isolate(find_beginning(text)), isolate(text));
}

std::string fold_vlans(const Vlans &vlans) {
  return fold_text(vlan_text(vlans), format_count(vlans.count(), "VLAN") + ": ");
}

const std::string &name_side(const SideReport &side) {
  return side.name.empty() ? side.source : side.name;
}

std::string describe_time(WallTime time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S %z}",
                     fmt::localtime(std::chrono::system_clock::to_time_t(time)));
}

std::string describe_accepted(const std::optional<Acceptance> &accepted) {
  return accepted ? "Accepted: " + isolate(describe_acceptance(*accepted)) : "";
}

const Look &find_look(std::optional<Outcome> outcome) {
  static constexpr Look unknown = {"caution", "!"};
  static constexpr Look known[] = {good_look, bad_look, {"caution", "?"}};
  return outcome ? known[std::size_t(*outcome)] : unknown;
}

std::string write_state_cell(const Look &look, const std::string &html) {
  return fmt::format("<span class=\"state {}\"><span aria-hidden=\"true\">{}</span> {}</span>",
                     look.name, look.sign, html);
}

std::string write_row(const std::string &attributes, const std::vector<std::string> &cells) {
  return fmt::format("<tr {}><th scope=\"row\">{}</th><td>{}</td></tr>\n", attributes, cells[0],
                     fmt::join(cells.begin() + 1, cells.end(), "</td><td>"));
}

std::string write_table(const char *kind, const std::string &caption,
                        const std::vector<std::string> &columns, const std::string &rows) {
  return fmt::format(R"(<table class="{}">
<caption>{}</caption>
<thead><tr><th scope="col">{}</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     kind, caption, fmt::join(columns, "</th><th scope=\"col\">"), rows);
}

std::string write_document(const Document &document) {
  return fmt::format(
      R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'sha256-{}'; )"
      R"(script-src 'sha256-{}'; connect-src {}; base-uri 'none'; form-action {}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
{}<title>{}</title>
<style>{}</style>
</head>
<body>
<a class="skip" href="#main">Skip to the content</a>
<header class="{}">
<p class="what" id="time" data-live>{}</p>
<h1 id="heading" data-live>{}</h1>
{}</header>
<main id="main" tabindex="-1">
{}</main>
<script>{}</script>
</body>
</html>
)",
      hash_text(page_style), hash_text(page_script), document.contacts, document.contacts,
      document.head, document.title, page_style, document.look.name, document.what,
      write_state_cell(document.look, document.heading), document.header, document.main,
      page_script);
}

std::string write_page(const PairReport &report) {
  const std::string heading = describe_heading(report);
  const struct {
    const char *id;
    const char *title;
    std::string content;
  } sections[] = {
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
  return write_document(
      {.title = fmt::format("{}: {} and {}", heading, escape_html(name_side(report.sides[0])),
                            escape_html(name_side(report.sides[1]))),
       .look = find_look(find_outcome(report)),
       .what = fmt::format(
           "Spanning-tree settings of {}. Generated {} by mcec-lab {}.",
           report.is_intended ? "a switch, compared with its intended state" : "two switches",
           describe_time(std::chrono::system_clock::now()), LAB_VERSION),
       .heading = heading,
       .header = fmt::format("<div class=\"verdict\">{}</div>\n{}<nav aria-label=\"Sections\"><ul>"
                             "\n{}</ul></nav>\n",
                             describe_page_verdict(report), write_pair_table(report), links),
       .main = main});
}

}  // namespace lab
