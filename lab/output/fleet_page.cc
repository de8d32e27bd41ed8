#include "output/fleet_page.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <map>

#include "output/event_text.h"
#include "output/fleet_words.h"
#include "output/page.h"
#include "output/page_parts.h"
#include "text/text.h"
#include "text/url.h"

namespace lab {
namespace {

using WallTime = std::chrono::system_clock::time_point;

// On top of the style of a comparison.
constexpr char fleet_style[] = R"css(
nav ul { padding: 0; margin: 0.5rem 0 0.75rem; }
nav a[aria-current] { font-weight: 650; color: inherit; }
form { display: flex; flex-wrap: wrap; gap: 0.5rem; align-items: center; }
input, button { font: inherit; padding: 0.2rem 0.5rem; color: inherit; border-radius: 4px; }
input, button { background: var(--page); border: 1px solid var(--faint); }
input { flex: 0 1 20rem; min-width: 8rem; }
#lost { color: var(--bad); font-weight: 650; }
.fleet th:nth-child(1) { width: 34%; }
.fleet th:nth-child(2), .fleet th:nth-child(3) { width: 13%; }
.fleet tbody small { display: block; color: var(--faint); }
@media screen and (max-width: 34rem) {
  .fleet tr { display: grid; grid-template-columns: 1fr 1fr; border-bottom: 1px solid var(--line); }
  .fleet tr > th:first-child, .fleet tr > :last-child { grid-column: 1 / -1; }
  .fleet tr > :nth-child(n) { width: auto; border-bottom: none; }
  .fleet thead th { position: static; box-shadow: none; }
}
)css";

// The filter is the server's, so that the page is the same without a script.
constexpr char fleet_script[] = R"js("use strict";
(() => {
  const PAUSE = 5000;
  const name = document.getElementById("name");
  let timer = 0;
  let last = 0;
  const replace = (page) => {
    const focus = document.activeElement?.getAttribute("href");
    for (const part of document.querySelectorAll("[data-live]")) {
      part.replaceWith(page.getElementById(part.id));
    }
    document.title = page.title;
    document.querySelector("header").className = page.querySelector("header").className;
    const link = focus && document.querySelector(`a[href="${CSS.escape(focus)}"]`);
    if (link) link.focus({ preventScroll: true });
  };
  const refresh = async () => {
    clearTimeout(timer);
    const number = ++last;
    let page = null;
    try {
      const answer = await fetch(location.href);
      if (answer.ok) page = new DOMParser().parseFromString(await answer.text(), "text/html");
    } catch {
      // The server may come back.
    }
    if (number !== last) return;
    if (page) replace(page);
    document.getElementById("lost").hidden = page !== null;
    timer = setTimeout(refresh, PAUSE);
  };
  name.addEventListener("input", () => {
    const url = new URL(location.href);
    url.searchParams.set("name", name.value);
    history.replaceState(null, "", url);
    refresh();
  });
  timer = setTimeout(refresh, PAUSE);
})();
)js";

// How a verdict looks: a class of the style, and a sign for whoever sees no colours.
struct FleetLook {
  const char *header;
  const char *row;
  const char *sign;
  const char *heading;
};

const FleetLook &fleet_look(std::optional<Outcome> outcome) {
  static constexpr FleetLook unknown = {"incomplete", "accepted", "!", "Not known"};
  static constexpr FleetLook known[] = {{"good", "good", "=", "Agreement"},
                                        {"bad", "bad", "≠", "Disagreement"},
                                        {"incomplete", "accepted", "?", "Not compared"}};
  return outcome ? known[std::size_t(*outcome)] : unknown;
}

std::string format_local_time(WallTime time) {
  return fmt::format("{:%Y-%m-%d %H:%M:%S %z}",
                     fmt::localtime(std::chrono::system_clock::to_time_t(time)));
}

// "12 s", "5 min", "3 h 12 min", "4 d 3 h".
std::string describe_age(WallTime::duration age) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(age).count();
  const auto minutes = seconds / 60;
  const auto hours = minutes / 60;
  if (minutes < 1) return fmt::format("{} s", std::max<int64_t>(seconds, 0));
  if (hours < 1) return fmt::format("{} min", minutes);
  if (hours < 24) return fmt::format("{} h {} min", hours, minutes % 60);
  return fmt::format("{} d {} h", hours / 24, hours % 24);
}

std::string describe_pair(const PairStatus &status) {
  return status.outcome ? describe_causes(*status.comparison) : describe_unknown(status);
}

// --- which pairs ---

std::string lower_case(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return text;
}

bool is_selected(const PairStatus &status, const FleetFilter &filter) {
  if (!filter.verdict.empty() && filter.verdict != outcome_word(status.outcome)) return false;
  const std::string text = pair_name(status) + "\n" + status.sources[0] + "\n" + status.sources[1];
  return lower_case(text).find(lower_case(filter.name)) != text.npos;
}

std::map<std::optional<Outcome>, std::size_t> count_outcomes(const FleetStatus &fleet) {
  std::map<std::optional<Outcome>, std::size_t> counts;
  for (const PairStatus &status : fleet) ++counts[status.outcome];
  return counts;
}

// --- HTML ---

struct FleetDocument {
  std::string title;
  std::string head;
  const char *look;  // of the header
  std::string header;
  std::string main;
  std::string script;
};

std::string write_document(const FleetDocument &document) {
  const std::string style = std::string(page_style) + fleet_style;
  return fmt::format(
      R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'sha256-{}'; )"
      R"(script-src 'sha256-{}'; connect-src 'self'; base-uri 'none'; form-action 'self'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
{}<title>{}</title>
<style>{}</style>
</head>
<body>
<header class="{}">
{}</header>
<main id="main" tabindex="-1">
<section id="content" data-live>
{}</section>
</main>
<script>{}</script>
</body>
</html>
)",
      hash_text(style), hash_text(document.script), document.head, document.title, style,
      document.look, document.header, document.main, document.script);
}

std::string link_verdict(const std::string &verdict, const std::string &text, std::size_t count,
                         const FleetFilter &filter) {
  const std::string query = (verdict.empty() ? "" : "&amp;verdict=" + verdict);
  return fmt::format("<li><a href=\"?name={}{}\"{}>{}: {}</a></li>\n", encode_url(filter.name),
                     query, verdict == filter.verdict ? " aria-current=\"true\"" : "", text, count);
}

std::string write_filters(const FleetStatus &fleet, const FleetFilter &filter) {
  auto counts = count_outcomes(fleet);
  std::string links = link_verdict("", "all", fleet.size(), filter);
  for (const auto &outcome : all_outcomes) {
    const char *word = outcome_word(outcome);
    links += link_verdict(word, word, counts[outcome], filter);
  }
  return fmt::format(R"(<nav id="verdicts" data-live aria-label="Pairs by verdict"><ul>
{}</ul></nav>
<form method="get">
<label for="name">Name or source</label>
<input type="search" id="name" name="name" value="{}" autocomplete="off" spellcheck="false">
<input type="hidden" name="verdict" value="{}">
<button>Filter</button>
</form>
<p id="lost" role="alert" hidden>The watch does not answer: this page may be out of date.</p>
)",
                     links, escaped(filter.name), escaped(filter.verdict));
}

std::string write_row(const PairStatus &status, WallTime now) {
  const FleetLook &look = fleet_look(status.outcome);
  const bool has_name = !status.name.empty();
  const bool has_time = status.changed != WallTime{};
  return fmt::format(
      R"(<tr class="{}"><th scope="row"><a href="pair/{}">{}</a>{}</th>)"
      R"(<td class="state"><span aria-hidden="true">{}</span> {}</td><td>{}</td><td>{}</td></tr>
)",
      look.row, encode_url(pair_name(status)), isolated(pair_name(status)),
      has_name ? fmt::format("<small>{} {}</small>", isolated(status.sources[0]),
                             isolated(status.sources[1]))
               : "",
      look.sign, outcome_word(status.outcome),
      has_time ? fmt::format("{}<small>{}</small>", describe_age(now - status.changed),
                             format_local_time(status.changed))
               : "",
      isolated(describe_pair(status)));
}

std::string write_table(const FleetStatus &fleet, const FleetFilter &filter, WallTime now) {
  std::size_t count = 0;
  std::string rows;
  for (const auto &outcome : all_outcomes) {
    for (const PairStatus &status : fleet) {
      if (status.outcome != outcome || !is_selected(status, filter)) continue;
      rows += write_row(status, now);
      ++count;
    }
  }
  return fmt::format(R"(<table class="fleet">
<caption>{} of {}</caption>
<thead><tr><th scope="col">Pair</th><th scope="col">Verdict</th><th scope="col">For</th>)"
                     R"(<th scope="col">Why</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     count, count_of(fleet.size(), "pair"), rows);
}

}  // namespace

std::string write_fleet_page(const FleetStatus &fleet, const FleetFilter &filter, WallTime now) {
  auto counts = count_outcomes(fleet);
  const auto *worst = std::find_if(std::begin(all_outcomes), std::end(all_outcomes),
                                   [&](const auto &outcome) { return counts[outcome] > 0; });
  const FleetLook &look = fleet_look(worst == std::end(all_outcomes) ? std::nullopt : *worst);
  const std::string heading = fmt::format("{}: {} of {}", look.heading,
                                          worst == std::end(all_outcomes) ? 0 : counts[*worst],
                                          count_of(fleet.size(), "pair"));
  return write_document(
      {.title = heading,
       .head = "<noscript><meta http-equiv=\"refresh\" content=\"5\"></noscript>\n",
       .look = look.header,
       .header =
           fmt::format("<p class=\"what\" id=\"time\" data-live>Spanning-tree settings of "
                       "watched pairs, at {}.</p>\n<h1 id=\"heading\" data-live>"
                       "<span aria-hidden=\"true\">{}</span> {}</h1>\n{}",
                       format_local_time(now), look.sign, heading, write_filters(fleet, filter)),
       .main = write_table(fleet, filter, now),
       .script = fleet_script});
}

std::string write_unknown_page(const PairStatus &status, WallTime now) {
  const FleetLook &look = fleet_look({});
  const std::string name = pair_name(status);
  std::string main = "<p>" + isolated(describe_unknown(status)) + "</p>\n";
  if (status.comparison) {
    main +=
        fmt::format("<p><a href=\"{}?last\">The last comparison</a>, which held until {}.</p>\n",
                    encode_url(name), format_local_time(status.compared));
  }
  return write_document(
      {.title = "Not known: " + escaped(name),
       .head = "<meta http-equiv=\"refresh\" content=\"5\">\n",
       .look = look.header,
       .header = fmt::format("<p class=\"what\">{} and {}, at {}.</p>\n<h1><span "
                             "aria-hidden=\"true\">{}</span> {}: the verdict is not known</h1>\n",
                             isolated(status.sources[0]), isolated(status.sources[1]),
                             format_local_time(now), look.sign, isolated(name)),
       .main = main,
       .script = ""});
}

}  // namespace lab
