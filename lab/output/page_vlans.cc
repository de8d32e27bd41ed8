#include "output/page_vlans.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <tuple>

#include "draimiofaf/types.h"
#include "output/page_text.h"
#include "output/sides.h"
#include "switch/vlans.h"
#include "text/text.h"

namespace lab {
namespace {

// Longer tables of VLANs are folded.
constexpr std::size_t most_open_rows = 40;

// What one switch has of each VLAN: its instance, or one of these.
enum : int { not_sent = -3, enabled = -2, disabled = -1 };
using VlanFacts = std::vector<int>;

std::string describe_fact(int fact) {
  constexpr const char *words[] = {"not sent", "enabled", "disabled"};
  return fact < 0 ? words[fact - not_sent] : fmt::format("instance {}", fact);
}

VlanFacts find_facts(const ParameterReport &parameter, const Bytes &value) {
  VlanFacts facts(vlan_count);
  const Vlans disabled_vlans = vlans_of_record(value);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    facts[vlan] = parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP
                      ? static_cast<int>(instance_of(value, vlan))
                  : disabled_vlans[vlan] ? disabled
                                         : enabled;
  }
  return facts;
}

bool is_compared(State state) {
  return state == State::same || state == State::different || state == State::same_on_twins;
}

// The VLANs of both switches, by the parameter that they compare; where they send different ones,
// each by its own.
struct VlanComparison {
  std::array<VlanFacts, 2> facts = {VlanFacts(vlan_count, not_sent),
                                    VlanFacts(vlan_count, not_sent)};
  bool is_same_parameter = false;
  bool counts = false;  // in the verdict
};

std::optional<VlanComparison> compare_vlans(const ScopeReport &scope) {
  VlanComparison own;
  std::optional<VlanComparison> both;
  bool is_sent = false;
  for (const ParameterReport &parameter : scope.parameters) {
    if (parameter.type != STP_MCEC_TYPE1_MST_REGION_VI_MAP &&
        parameter.type != STP_MCEC_TYPE1_STP_ENDIS) {
      continue;
    }
    for (std::size_t side = 0; side < parameter.values.size(); ++side) {
      if (!parameter.values[side]) continue;
      own.facts[side] = find_facts(parameter, *parameter.values[side]);
      is_sent = true;
    }
    const bool counts = is_compared(parameter.states[0]);
    if (parameter.values[0] && parameter.values[1] && (!both || (counts && !both->counts))) {
      both = {own.facts, true, counts};
    }
  }
  if (both) return both;
  return is_sent ? std::optional(own) : std::nullopt;
}

struct VlanState {
  const char *key;
  const char *words;
};

// Those that an operator looks for come first.
constexpr VlanState vlan_states[] = {{"fail", "twin VLAN, fails"},
                                     {"different", "different"},
                                     {"apart", "differs, but is not compared"},
                                     {"unlike", "not compared"},
                                     {"pass", "twin VLAN, passes"},
                                     {"same", "same"}};
enum VlanStateIndex { fail, different, apart, unlike, pass, same };

// The VLANs with the same state, and the same facts on left and right.
using VlanGroups = std::map<std::tuple<VlanStateIndex, int, int>, Vlans>;

VlanGroups group_vlans(const ScopeReport &scope, const VlanComparison &compared) {
  VlanGroups groups;
  for (std::size_t vlan = 0; vlan < vlan_count; ++vlan) {
    const int left = compared.facts[0][vlan];
    const int right = compared.facts[1][vlan];
    const bool is_map = left >= 0 && right >= 0;
    const VlanStateIndex state = scope.fail && (*scope.fail)[vlan]   ? fail
                                 : scope.pass && (*scope.pass)[vlan] ? pass
                                 : !compared.is_same_parameter       ? unlike
                                 : left == right                     ? same
                                 : is_map && compared.counts         ? different
                                                                     : apart;
    groups[{state, left, right}].set(vlan);
  }
  return groups;
}

// Rows of VLANs, folded when they are many or `fold` says so.
std::string write_vlan_table(const char *caption, const std::vector<std::string> &rows, bool fold,
                             const SideNames &names) {
  if (rows.empty()) return "";
  std::string body;
  for (const std::string &row : rows) body += row;
  return fmt::format(R"(<details class="fold"{}><summary>{}</summary>
<table class="vlans">
<caption class="unseen">{}</caption>
<thead><tr><th scope="col">VLANs</th><th scope="col">{}</th><th scope="col">{}</th>)"
                     R"(<th scope="col">comparison</th></tr></thead>
<tbody>
{}</tbody>
</table></details>
)",
                     fold || rows.size() > most_open_rows ? "" : " open", caption, caption,
                     names[0], names[1], body);
}

}  // namespace

std::string write_vlan_section(const PairReport &report) {
  const auto text_of_vlans = [](const Vlans &vlans) {
    return vlans.none() ? "none" : folded(vlans);
  };
  std::string html =
      fmt::format("<dl><dt>Twin VLANs</dt><dd>{}</dd>", text_of_vlans(report.twin_vlans));
  if (report.checks.empty()) return html + "</dl>\n";
  const ScopeReport &scope = report.checks.front();
  if (scope.pass) {
    html += fmt::format("<dt>Twin VLANs that pass</dt><dd>{}</dd>", text_of_vlans(*scope.pass)) +
            fmt::format("<dt>Twin VLANs that fail</dt><dd>{}</dd>", text_of_vlans(*scope.fail));
  }
  html += "</dl>\n";
  const auto compared = compare_vlans(scope);
  if (!compared) return html;

  std::vector<std::string> unequal;
  std::vector<std::string> equal;
  for (const auto &[facts, vlans] : group_vlans(scope, *compared)) {
    const auto &[state, left, right] = facts;
    (left == right ? equal : unequal)
        .push_back(fmt::format("<tr data-state=\"{}\" data-vlans=\"{}\"><th "
                               "scope=\"row\">{}</th><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                               vlan_states[state].key, vlan_text(vlans), folded(vlans),
                               describe_fact(left), describe_fact(right),
                               vlan_states[state].words));
  }
  const SideNames &names = side_names(report);
  html += fmt::format(R"(<figure id="picture" data-left="{}" data-right="{}" hidden>
<figcaption id="picture-caption">The 4,096 VLANs, 64 in a row</figcaption>
<p id="named" role="status">Point at a VLAN, or tab into the grid and use the arrow keys.</p>
<p id="more" hidden><span aria-hidden="true">↔</span> Scroll sideways for the other columns.</p>
<div class="scroll"><div id="grid" role="grid" aria-labelledby="picture-caption" )"
                      R"(aria-readonly="true"></div></div>
<ul id="legend" aria-label="Legend of the grid"></ul>
</figure>
<noscript><p>The picture of the VLANs needs a script; the tables have the content.</p></noscript>
)",
                      names[0], names[1]);
  return html + write_vlan_table("VLANs that differ between the switches", unequal, false, names) +
         write_vlan_table("VLANs that are the same on both switches", equal, true, names);
}

}  // namespace lab
