#include "output/page_vlans.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <tuple>

#include "output/page_text.h"
#include "output/words.h"
#include "switch/vlans.h"
#include "text/text.h"

namespace lab {
namespace {

// Longer tables of VLANs are folded.
constexpr std::size_t most_open_rows = 40;

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

}  // namespace

std::string page_of_vlans(const Json &document) {
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

}  // namespace lab
