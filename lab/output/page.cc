#include "output/page.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/page_parts.h"
#include "output/page_text.h"
#include "output/page_vlans.h"
#include "output/told.h"
#include "output/words.h"
#include "text/hash.h"
#include "text/text.h"

namespace lab {
namespace {

// Of more scopes than these, only the first are named.
constexpr std::size_t scopes_named = 8;

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

std::string fix_text(const Json &row) {
  const std::string text = text_at(field(row, "fix"), "text");
  return text.empty() ? text_at(row, "fix-text") : text;
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
    if (const std::string fix = fix_text(row); !fix.empty()) {
      rows += fmt::format("<tr class=\"fix\"><td colspan=\"4\">Fix: {}</td></tr>\n", said(fix));
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
                              {"vlans", "VLANs", page_of_vlans(document)},
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
      hash_text(page_style), hash_text(page_script), verdict.heading,
      escaped(name_of(document, "left")), escaped(name_of(document, "right")), page_style,
      agree ? "good" : "bad", agree ? "=" : "≠", verdict.heading, verdict.text,
      pair_table(document), links, main, page_script);
}

}  // namespace lab
