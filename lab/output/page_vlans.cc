#include <fmt/core.h>

#include <tuple>

#include "draimiofaf/types.h"
#include "output/page.h"
#include "output/words.h"

namespace lab {
namespace {

// What one switch has of each VLAN: its instance, or one of these.
enum : int { not_sent = -3, enabled = -2, disabled = -1 };

std::string describe_fact(int fact) {
  constexpr const char *words[] = {"not sent", "enabled", "disabled"};
  return fact < 0 ? words[fact - not_sent] : fmt::format("instance {}", fact);
}

// The VLANs of both switches, by the parameter that they compare; where they send different ones,
// each by its own.
struct VlanComparison {
  std::array<std::vector<int>, 2> facts = {std::vector<int>(vlan_count, not_sent),
                                           std::vector<int>(vlan_count, not_sent)};
  const ParameterReport *sent = nullptr;  // by a switch
  const ParameterReport *both = nullptr;  // sent by both; nullptr: none is
  bool counts = false;                    // in the verdict
};

void add_facts(const ParameterReport &parameter, VlanComparison &compared) {
  for (std::size_t side = 0; side < parameter.values.size(); ++side) {
    if (!parameter.values[side]) continue;
    const Bytes &value = *parameter.values[side];
    const Vlans off = vlans_of_record(value);
    for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
      compared.facts[side][vlan] = parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP
                                       ? int(instance_of(value, vlan))
                                   : off[vlan] ? disabled
                                               : enabled;
    }
  }
}

VlanComparison compare_vlans(const ScopeReport &scope) {
  VlanComparison compared;
  for (const ParameterReport &parameter : scope.parameters) {
    if (parameter.type != STP_MCEC_TYPE1_MST_REGION_VI_MAP &&
        parameter.type != STP_MCEC_TYPE1_STP_ENDIS) {
      continue;
    }
    add_facts(parameter, compared);
    compared.sent = &parameter;
    const State state = parameter.states[0];
    const bool counts =
        state == State::same || state == State::different || state == State::same_on_twins;
    if (parameter.values[0] && parameter.values[1] && (compared.both == nullptr || counts)) {
      compared.both = &parameter;
      compared.counts = counts;
    }
  }
  if (compared.both != nullptr) add_facts(*compared.both, compared);
  return compared;
}

// Those that an operator looks for come first.
enum VlanState { fail, different, apart, unlike, pass, same };
constexpr struct {
  const char *key;
  const char *words;
} vlan_states[] = {{"fail", "twin VLAN, fails"},
                   {"different", "different"},
                   {"apart", "differs, but is not compared"},
                   {"unlike", "not compared"},
                   {"pass", "twin VLAN, passes"},
                   {"same", "same"}};

// The VLANs with the same state, and the same facts on left and right.
using VlanGroups = std::map<std::tuple<VlanState, int, int>, Vlans>;

VlanGroups group_vlans(const ScopeReport &scope, const VlanComparison &compared) {
  VlanGroups groups;
  for (std::size_t vlan = 0; vlan < vlan_count; ++vlan) {
    const int left = compared.facts[0][vlan];
    const int right = compared.facts[1][vlan];
    const bool is_map = left >= 0 && right >= 0;
    const VlanState state = scope.fail && (*scope.fail)[vlan]   ? fail
                            : scope.pass && (*scope.pass)[vlan] ? pass
                            : compared.both == nullptr          ? unlike
                            : left == right                     ? same
                            : is_map && compared.counts         ? different
                                                                : apart;
    groups[{state, left, right}].set(vlan);
  }
  return groups;
}

// The groups that are equal on both switches, folded, or the others, folded when they are many.
std::string write_vlan_table(const VlanGroups &groups, bool are_equal, const SideNames &names) {
  constexpr std::size_t most_open_rows = 40;
  std::size_t count = 0;
  std::string rows;
  for (const auto &[facts, vlans] : groups) {
    const auto &[state, left, right] = facts;
    if ((left == right) != are_equal) continue;
    ++count;
    rows += fmt::format(
        "<tr data-state=\"{}\" data-vlans=\"{}\"><th scope=\"row\">{}</th><td>{}</td><td>{}</td>"
        "<td>{}</td></tr>\n",
        vlan_states[state].key, vlan_text(vlans), folded(vlans), describe_fact(left),
        describe_fact(right), vlan_states[state].words);
  }
  if (rows.empty()) return "";
  return fmt::format(R"(<details class="fold"{0}><summary>{1}</summary>
<table class="vlans">
<caption class="unseen">{1}</caption>
<thead><tr><th scope="col">VLANs</th><th scope="col">{2}</th><th scope="col">{3}</th>)"
                     R"(<th scope="col">comparison</th></tr></thead>
<tbody>
{4}</tbody>
</table></details>
)",
                     are_equal || count > most_open_rows ? "" : " open",
                     are_equal ? "VLANs that are the same on both switches"
                               : "VLANs that differ between the switches",
                     names[0], names[1], rows);
}

}  // namespace

std::string write_vlan_section(const PairReport &report) {
  std::string html = "<dl>";
  const auto add = [&html](const char *title, const Vlans &vlans) {
    html += fmt::format("<dt>{}</dt><dd>{}</dd>", title, vlans.none() ? "none" : folded(vlans));
  };
  add("Twin VLANs", report.twin_vlans);
  if (report.checks.empty()) return html + "</dl>\n";
  const ScopeReport &scope = report.checks.front();
  if (scope.pass) {
    add("Twin VLANs that pass", *scope.pass);
    add("Twin VLANs that fail", *scope.fail);
  }
  html += "</dl>\n";
  const VlanComparison compared = compare_vlans(scope);
  if (compared.sent == nullptr) return html;
  const VlanGroups groups = group_vlans(scope, compared);
  const SideNames &names = side_names(report);
  return html +
         fmt::format(R"(<figure id="picture" data-left="{}" data-right="{}" hidden>
<figcaption id="picture-caption">The 4,096 VLANs, 64 in a row</figcaption>
<p id="named" role="status">Point at a VLAN, or tab into the grid and use the arrow keys.</p>
<p id="more" hidden><span aria-hidden="true">↔</span> Scroll sideways for the other columns.</p>
<div class="scroll"><div id="grid" role="grid" aria-labelledby="picture-caption" )"
                     R"(aria-readonly="true"></div></div>
<ul id="legend" aria-label="Legend of the grid"></ul>
</figure>
<noscript><p>The picture of the VLANs needs a script; the tables have the content.</p></noscript>
)",
                     names[0], names[1]) +
         write_vlan_table(groups, false, names) + write_vlan_table(groups, true, names);
}

}  // namespace lab
