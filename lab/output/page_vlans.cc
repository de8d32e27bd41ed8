#include <fmt/core.h>

#include <tuple>

#include "draimiofaf/types.h"
#include "output/page.h"
#include "output/words.h"

namespace lab {
namespace {

// The setting of a VLAN on one switch: its instance, or one of these.
enum : int { not_sent = -3, enabled = -2, disabled = -1 };

std::string describe_setting(int setting) {
  constexpr const char *words[] = {"not sent", "enabled", "disabled"};
  return setting < 0 ? words[setting - not_sent] : fmt::format("instance {}", setting);
}

// The setting of each VLAN on one side, from a parameter that it sends, or nullptr.
std::vector<int> find_vlan_settings(const ParameterReport *parameter, std::size_t side) {
  std::vector<int> settings(vlan_count, not_sent);
  if (parameter == nullptr) return settings;
  const Bytes &value = *parameter->values[side];
  const Vlans off = vlans_of_record(value);
  const bool is_map = parameter->type == STP_MCEC_TYPE1_MST_REGION_VI_MAP;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    settings[vlan] = is_map ? int(instance_of(value, vlan)) : off[vlan] ? disabled : enabled;
  }
  return settings;
}

bool is_compared_by_library(const ParameterReport &parameter) {
  const State state = parameter.states[0];
  return state == State::same || state == State::different || state == State::same_on_twins;
}

// The parameter that contains the VLANs of left and right: preferably one that both send and the
// library compares. If the sides send different ones, each has its own.
std::array<const ParameterReport *, 2> find_vlan_parameters(const ScopeReport &scope) {
  std::array<const ParameterReport *, 2> found = {};
  for (const ParameterReport &parameter : scope.parameters) {
    const bool has_vlans = parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP ||
                           parameter.type == STP_MCEC_TYPE1_STP_ENDIS;
    const bool has_both = found[0] != nullptr && found[0] == found[1];
    const bool is_better =
        parameter.values[0] && parameter.values[1] && is_compared_by_library(parameter);
    if (!has_vlans || (has_both && !is_better)) continue;
    for (std::size_t side = 0; side < found.size(); ++side) {
      if (parameter.values[side]) found[side] = &parameter;
    }
  }
  return found;
}

// The result of comparing a VLAN, in the order of the tables.
enum VlanState { fail, different, ignored, incomparable, pass, same };
constexpr struct {
  const char *key;
  const char *words;
} vlan_states[] = {{"fail", "twin VLAN, fails"},
                   {"different", "different"},
                   {"ignored", "differs, but is not compared"},
                   {"incomparable", "not compared"},
                   {"pass", "twin VLAN, passes"},
                   {"same", "same"}};

// The VLANs by state, and by setting on left and right.
using VlanGroups = std::map<std::tuple<VlanState, int, int>, Vlans>;

VlanGroups group_vlans(const ScopeReport &scope) {
  const auto [of_left, of_right] = find_vlan_parameters(scope);
  if (of_left == nullptr && of_right == nullptr) return {};
  const auto left = find_vlan_settings(of_left, 0);
  const auto right = find_vlan_settings(of_right, 1);
  VlanGroups groups;
  for (std::size_t vlan = 0; vlan < vlan_count; ++vlan) {
    const bool is_map = left[vlan] >= 0 && right[vlan] >= 0;
    const VlanState state = scope.fail && (*scope.fail)[vlan]            ? fail
                            : scope.pass && (*scope.pass)[vlan]          ? pass
                            : of_left != of_right                        ? incomparable
                            : left[vlan] == right[vlan]                  ? same
                            : is_map && is_compared_by_library(*of_left) ? different
                                                                         : ignored;
    groups[{state, left[vlan], right[vlan]}].set(vlan);
  }
  return groups;
}

// A foldable table of the groups that are equal on both switches, or of the others.
std::string write_vlan_table(const VlanGroups &groups, bool are_equal, const SideNames &names) {
  constexpr std::size_t most_open_rows = 40;
  std::size_t count = 0;
  std::string rows;
  for (const auto &[key, vlans] : groups) {
    const auto &[state, left, right] = key;
    if ((left == right) != are_equal) continue;
    ++count;
    rows += write_row(fmt::format("data-state=\"{}\" data-vlans=\"{}\"", vlan_states[state].key,
                                  vlan_text(vlans)),
                      {fold_vlans(vlans), describe_setting(left), describe_setting(right),
                       vlan_states[state].words});
  }
  if (rows.empty()) return "";
  const char *title = are_equal ? "VLANs that are the same on both switches"
                                : "VLANs that differ between the switches";
  return fmt::format(
      "<details class=\"fold\"{}><summary>{}</summary>\n{}</details>\n",
      are_equal || count > most_open_rows ? "" : " open", title,
      write_table("vlans", title, {"VLANs", names[0], names[1], "comparison"}, rows));
}

}  // namespace

std::string write_vlan_section(const PairReport &report) {
  std::string html = "<dl>";
  const auto add = [&html](const char *title, const Vlans &vlans) {
    html += fmt::format("<dt>{}</dt><dd>{}</dd>", title, vlans.none() ? "none" : fold_vlans(vlans));
  };
  add("Twin VLANs", report.twin_vlans);
  if (report.checks.empty()) return html + "</dl>\n";
  const ScopeReport &scope = report.checks.front();
  if (scope.pass) {
    add("Twin VLANs that pass", *scope.pass);
    add("Twin VLANs that fail", *scope.fail);
  }
  html += "</dl>\n";
  const VlanGroups groups = group_vlans(scope);
  if (groups.empty()) return html;
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
<noscript><p>The grid of VLANs needs JavaScript. The tables have the same content.</p></noscript>
)",
                     names[0], names[1]) +
         write_vlan_table(groups, false, names) + write_vlan_table(groups, true, names);
}

}  // namespace lab
