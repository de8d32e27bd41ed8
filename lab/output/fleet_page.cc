#include "output/fleet_page.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>

#include "output/events.h"
#include "output/metrics.h"
#include "output/page.h"
#include "output/words.h"
#include "text/text.h"

namespace lab {
namespace {

// Selects the pairs of a page.
struct FleetFilter {
  std::string verdict;  // as outcome_name() returns it; empty: all
  std::string name;     // substring of the pair's name or of a source, case-insensitive
};

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

// --- filters ---

bool is_selected(const PairStatus &status, const FleetFilter &filter) {
  if (!filter.verdict.empty() && filter.verdict != outcome_name(status.outcome)) return false;
  const std::string text = pair_name(status) + "\n" + status.sources[0] + "\n" + status.sources[1];
  return strcasestr(text.c_str(), filter.name.c_str()) != nullptr;
}

// --- HTML ---

// Percent-encodes all but the unreserved characters.
std::string encode_url(std::string_view text) {
  constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  std::string url;
  for (const char c : text) {
    url += plain.find(c) != plain.npos ? std::string(1, c) : fmt::format("%{:02X}", uint8_t(c));
  }
  return url;
}

std::string write_content(const std::string &html) {
  return "<section id=\"content\" data-live>\n" + html + "</section>\n";
}

std::string link_verdict(const std::string &verdict, const std::string &text, std::size_t count,
                         const FleetFilter &filter) {
  const std::string query = (verdict.empty() ? "" : "&amp;verdict=" + verdict);
  return fmt::format("<li><a href=\"?name={}{}\"{}>{}: {}</a></li>\n", encode_url(filter.name),
                     query, verdict == filter.verdict ? " aria-current=\"true\"" : "", text, count);
}

std::string write_filters(const FleetStatus &fleet, const FleetFilter &filter) {
  std::string links = link_verdict("", "all", fleet.size(), filter);
  for (const auto &outcome : outcomes_by_urgency) {
    const char *word = outcome_name(outcome);
    links += link_verdict(word, word, count_pairs(fleet, outcome), filter);
  }
  return fmt::format(R"(<nav id="verdicts" data-live aria-label="Pairs by verdict"><ul>
{}</ul></nav>
<form method="get">
<label for="name">Name or source</label>
<input type="search" id="name" name="name" value="{}" autocomplete="off" spellcheck="false">
<input type="hidden" name="verdict" value="{}">
<button>Filter</button>
</form>
<p id="stale" role="alert" hidden>The server does not respond. This page may be out of date.</p>
)",
                     links, escape_html(filter.name), escape_html(filter.verdict));
}

std::string write_pair(const PairStatus &status, WallTime now) {
  const Look &look = find_look(status.outcome);
  const std::string name = pair_name(status);
  std::string sources;
  if (!status.name.empty()) {
    sources =
        fmt::format("<small>{} {}</small>", isolate(status.sources[0]), isolate(status.sources[1]));
  }
  std::string age;
  if (status.changed != WallTime{}) {
    age = fmt::format("{}<small>{}</small>", describe_age(now - status.changed),
                      describe_time(status.changed));
  }
  const std::string reason =
      status.outcome ? describe_causes(*status.comparison) : describe_unknown(status);
  return write_row(
      fmt::format("class=\"{}\"", look.name),
      {fmt::format("<a href=\"pair/{}\">{}</a>{}", encode_url(name), isolate(name), sources),
       write_state_cell(look, outcome_name(status.outcome)), age, isolate(reason)});
}

std::string write_pairs(const FleetStatus &fleet, const FleetFilter &filter, WallTime now) {
  std::size_t count = 0;
  std::string rows;
  for (const auto &outcome : outcomes_by_urgency) {
    for (const PairStatus &status : fleet) {
      if (status.outcome != outcome || !is_selected(status, filter)) continue;
      rows += write_pair(status, now);
      ++count;
    }
  }
  return write_table("fleet", fmt::format("{} of {}", count, format_count(fleet.size(), "pair")),
                     {"Pair", "Verdict", "Unchanged for", "Reason"}, rows);
}

// The page reloads every few seconds, with or without scripts.
std::string write_fleet_page(const FleetStatus &fleet, const FleetFilter &filter, WallTime now) {
  constexpr const char *words[] = {"Agreement", "Disagreement", "Not compared"};
  const std::optional<Outcome> outcome = find_fleet_outcome(fleet);
  const std::string heading =
      fmt::format("{}: {} of {}", outcome ? words[std::size_t(*outcome)] : "Unknown",
                  count_pairs(fleet, outcome), format_count(fleet.size(), "pair"));
  return write_document(
      {.title = heading,
       .head = "<noscript><meta http-equiv=\"refresh\" content=\"5\"></noscript>\n",
       .contacts = "'self'",
       .look = find_look(outcome),
       .what = "Spanning-tree settings of watched pairs, at " + describe_time(now) + ".",
       .heading = heading,
       .header = write_filters(fleet, filter),
       .main = write_content(write_pairs(fleet, filter, now))});
}

// Replaces a comparison that may be out of date.
std::string write_unknown_page(const PairStatus &status, WallTime now) {
  const std::string name = pair_name(status);
  std::string main = "<p>" + isolate(describe_unknown(status)) + "</p>\n";
  if (status.comparison) {
    main += fmt::format("<p><a href=\"{}?last\">The last comparison</a> was valid until {}.</p>\n",
                        encode_url(name), describe_time(status.compared));
  }
  return write_document({.title = "Unknown: " + escape_html(name),
                         .head = "<meta http-equiv=\"refresh\" content=\"5\">\n",
                         .look = find_look({}),
                         .what = fmt::format("{} and {}, at {}.", isolate(status.sources[0]),
                                             isolate(status.sources[1]), describe_time(now)),
                         .heading = isolate(name) + ": the verdict is unknown",
                         .header = "",
                         .main = write_content(main)});
}

}  // namespace

std::optional<HttpReply> answer_request(const HttpRequest &request, const FleetStatus &fleet,
                                        std::chrono::system_clock::time_point now) {
  constexpr char html[] = "text/html; charset=utf-8";
  const auto &[path, query] = request;
  if (path == "/") {
    const auto field = [&query = query](const char *name) {
      return query.contains(name) ? query.at(name) : "";
    };
    return HttpReply{html, write_fleet_page(fleet, {field("verdict"), field("name")}, now)};
  }
  if (path == "/metrics") {
    return HttpReply{"text/plain; version=0.0.4; charset=utf-8", format_metrics(fleet)};
  }
  const PairStatus *status = find_in(
      fleet, [&path = path](const PairStatus &pair) { return path == "/pair/" + pair_name(pair); });
  if (status == nullptr) return std::nullopt;
  const bool has_page = status->comparison && (status->outcome || query.contains("last"));
  return HttpReply{html,
                   has_page ? write_page(*status->comparison) : write_unknown_page(*status, now)};
}

}  // namespace lab
