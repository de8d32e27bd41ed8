#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "draimiofaf/types.h"
#include "output/words.h"
#include "sonic/rows.h"
#include "switch/values.h"

namespace lab {
namespace {

// A fix names the field of a configuration dump, or only the command if dumps have no such field.
constexpr Advice advice_table[] = {
    {STP_MCEC_TYPE1_STP_MODE,
     "The halves of a channel send different BPDUs, so the attached device sees two bridges "
     "instead of one. Between the two switches, only the common spanning tree works.",
     "Configure the same mode on both switches: STP|GLOBAL mode, mst or pvst; or the command "
     "stp-mode."},
    {STP_MCEC_TYPE1_STP_ENDIS,
     "On such a VLAN, one half of a channel forwards all frames and the other half follows "
     "spanning tree. A loop through the half without spanning tree is not blocked.",
     "Enable spanning tree on a twin VLAN on both switches or on neither: STP_VLAN|VlanN enabled, "
     "true or false; or the command stp-endis."},
    {STP_MCEC_TYPE1_MST_REGION_NAME,
     "The switches are in different MST regions. Between regions, all VLANs follow one common "
     "tree: of several links, all but one are blocked for every instance.",
     "Configure the same region name on both switches: STP_MST|GLOBAL name. Without a name, a "
     "region is named after the address of its switch, so two such regions always differ."},
    {STP_MCEC_TYPE1_MST_REGION_REVISION,
     "The switches are in different MST regions, with the same effect as different names. The "
     "usual cause is a change of the region on one switch only.",
     "Make the change on the other switch too, then configure the same revision on both: "
     "STP_MST|GLOBAL revision."},
    {STP_MCEC_TYPE1_MST_REGION_VI_MAP,
     "The digests of the maps differ, so the switches are in different MST regions, with the same "
     "effect as different names. A VLAN is cut off where the common tree uses a link that does "
     "not carry it.",
     "Assign each VLAN to the same instance on both switches: STP_MST_INST|MST_INSTANCE|N "
     "vlan_list. The order of the list does not matter."},
    {STP_MCEC_TYPE1_LOOP_GUARD,
     "When BPDUs stop on a link that still carries frames, the switch with loop guard blocks its "
     "port, but the other switch forwards: a loop through the half without loop guard.",
     "Enable or disable loop guard on both switches: the command gbl-loopguard. Dumps do not "
     "contain this setting."},
    {STP_MCEC_TYPE1_BRIDGE_ASSURANCE,
     "A network port with bridge assurance is blocked when it receives no BPDUs. A switch without "
     "bridge assurance sends no BPDUs on ports that only receive them, so working links are "
     "blocked.",
     "Enable or disable bridge assurance on both switches: the command gbl-bridge-assurance. Dumps "
     "do not contain this setting."},
    {STP_MCEC_TYPE1_GBL_PORT_TYPE,
     "Ports without a type of their own use this default: one half of a channel forwards "
     "immediately, drops BPDUs or is shut down by a BPDU, while the other half takes part in "
     "spanning tree.",
     "Configure the same defaults on both switches: the commands gbl-edge, gbl-edge-bpduguard, "
     "gbl-edge-bpdufilter and gbl-network. Dumps do not contain these settings."},
    {STP_MCEC_TYPE1_GBL_MST_SIMULATE_PVST,
     "If a device on a channel runs Rapid-PVST, the half with PVST simulation interoperates with "
     "it and the other half is blocked.",
     "Enable or disable PVST simulation on both switches: the command gbl-mst-simulate-pvst. Dumps "
     "do not contain this setting."},
    {STP_MCEC_TYPE1_IFI_PORT_TYPE,
     "One half of the channel forwards immediately, the other half waits for spanning tree. A loop "
     "behind the channel stays open through the edge half until the first BPDU arrives.",
     "Configure the same type on both halves: STP_PORT|PortChannelN edge_port in mst, portfast in "
     "pvst, true or false; or the command if-port-type."},
    {STP_MCEC_TYPE1_IFI_PORT_GUARD,
     "When the channel receives superior BPDUs, the half with root guard is blocked and the other "
     "half accepts the new root bridge. Frames sent over the blocked half are lost.",
     "Configure root guard on both halves or on neither: STP_PORT|PortChannelN root_guard, true or "
     "false; or the command if-guard."},
    {STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST,
     "If the device on the channel runs Rapid-PVST, the half with PVST simulation interoperates "
     "with it and the other half is blocked.",
     "Configure the same value on both halves: the command if-mst-simulate-pvst. Dumps do not "
     "contain this setting."},
};

// The table is sorted by type and complete.
#define LAB_TYPE(name, type, ...) type,
constexpr uint16_t advised_types[] = {STP_MCEC_TYPE1_PARAMETERS(LAB_TYPE)};
#undef LAB_TYPE
static_assert(std::equal(std::begin(advice_table), std::end(advice_table),
                         std::begin(advised_types), std::end(advised_types),
                         [](const Advice &row, uint16_t type) { return row.type == type; }));

struct FieldMeaning {
  std::string_view table;
  std::string_view field;  // empty: the row, and every field without an entry of its own
  const char *meaning;
};

// The fields of no parameter. The first entry that matches applies.
constexpr FieldMeaning field_meanings[] = {
    {"DEVICE_METADATA", "mac",
     "The address of the switch. A region without a name is named after it."},
    {"DEVICE_METADATA", "hostname", "The name of the switch."},
    {"VLAN", "", "The VLAN exists."},
    {"VLAN_MEMBER", "",
     "The interface carries the VLAN. A VLAN that a multi-chassis channel carries on both switches "
     "is a twin VLAN: enable spanning tree on it on both switches or on neither."},
    {"STP_PORT", "enabled",
     "Spanning tree is enabled on the interface; a note reports a difference."},
    {"MCLAG_DOMAIN", "peer_link",
     "The peer link; a note reports a switch that has multi-chassis channels and no peer link."},
    {"MCLAG_DOMAIN", "", "Identifies the peers of the domain; a note reports a difference."},
    {"MCLAG_INTERFACE", "",
     "The channel is multi-chassis; the channel of the same name on the peer is its other half. If "
     "only one switch has the row, add it on the other switch or remove it."},
    {"", "", "A timer; a note reports a difference."},
};

// --- fixes ---

std::string place_text(const Change &change) {
  return change.table + '|' + change.key + ' ' + change.field;
}

// "true on right, or false on left". Sides with an empty text are left out, and an intended state,
// which does not change.
template <class Describe>
std::string describe_sides(const SideNames &names, Describe describe) {
  std::vector<std::string> texts;
  for (const std::size_t side : {1U, 0U}) {
    if (side == 0 && names == intended_names) continue;
    const std::string text = describe(side);
    if (!text.empty()) texts.push_back(text + " on " + names[side]);
  }
  return join(texts, ", or ");
}

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left".
std::string describe_changes(const Fix &fix, const SideNames &names) {
  std::string last_place;
  return describe_sides(names, [&](std::size_t side) {
    return join(describe_each(fix.alone[side].value_or(Changes{}), [&](const Change &change) {
      const std::string place = place_text(change);
      const bool is_new = std::exchange(last_place, place) != place;
      return (is_new ? place + ": " : "") +
             (change.value ? visible(shorten(joined(*change.value))) : "nothing");
    }));
  });
}

// The new state of the VLANs of a group: "in instance 2", "true", "listed".
std::string describe_word(const Fix &fix, uint32_t word) {
  if (fix.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return "in instance " + std::to_string(word);
  if (fix.field != nullptr) return word != 0 ? "false" : "true";
  return word != 0 ? "listed" : "not listed";
}

std::string describe_vlan_groups(const Fix &fix, const SideNames &names) {
  constexpr std::size_t most_groups = 4;
  // If only one side can be patched, the other is left out.
  const bool is_any = !fix.alone[0] && !fix.alone[1];
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < std::min(fix.groups.size(), most_groups); ++i) {
    const VlanGroup &group = fix.groups[i];
    const auto describe = [&](std::size_t side) {
      return is_any || fix.alone[side] ? describe_word(fix, group.words[1 - side]) : "";
    };
    texts.push_back(vlan_words(group.vlans) + " " + describe_sides(names, describe));
  }
  if (fix.groups.size() > most_groups) {
    texts.push_back(fmt::format("and {} more groups of VLANs", fix.groups.size() - most_groups));
  }
  return (fix.field != nullptr ? fmt::format("{} {}", fix.field->table, fix.field->name)
                               : parameter_key(fix.type)) +
         ": " + join(texts, "; ");
}

// "ifi-port-guard of PortChannel10: root on right, or none on left".
std::string describe_settings(const Fix &fix, const SideNames &names) {
  return parameter_key(fix.type) + (fix.channel.empty() ? "" : " of " + printable(fix.channel)) +
         ": " + describe_sides(names, [&](std::size_t side) {
           const auto &value = fix.values[1 - side];
           return value ? written({fix.type, *value}) : "nothing";
         });
}

// The fix of one scope, with the name of its group in place of the channel.
Fix widen_fix(Fix fix, const ScopeGroup &group) {
  for (auto &changes : fix.alone) {
    if (!changes || fix.channel.empty()) continue;
    for (Change &change : *changes) {
      if (change.key == fix.channel) change.key = group.name;
    }
  }
  if (!fix.channel.empty()) fix.channel = group.name;
  return fix;
}

}  // namespace

const Advice &find_advice(uint16_t type) {
  return *std::ranges::find(advice_table, type, &Advice::type);
}

const char *describe_field(const Field &field) {
  const auto matches = [&](const FieldMeaning &row) {
    return row.table.empty() ||
           (row.table == field.table && (row.field.empty() || row.field == field.name));
  };
  return std::ranges::find_if(field_meanings, matches)->meaning;
}

std::string describe_fix(const Fix &fix, const SideNames &names, const ScopeGroup *group) {
  if (group != nullptr) return describe_fix(widen_fix(fix, *group), names);
  if (!fix.groups.empty()) return describe_vlan_groups(fix, names);
  if (fix.kind == Fix::Kind::with_mode) {
    return fmt::format("fixed by the change of {}|{} {}", fix.field->table, fix.field->key,
                       fix.field->name);
  }
  if (fix.kind == Fix::Kind::common_name) {
    const Change &change = (*fix.both)[0][0];
    return place_text(change) + ": one name on both, for instance " + joined(*change.value);
  }
  const bool is_any = !fix.alone[0] && !fix.alone[1];
  return is_any ? describe_settings(fix, names) : describe_changes(fix, names);
}

std::string describe_missing_row(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &first = *group.scopes.front();
  std::string row = first.missing_row;
  if (row.empty() || first.accepted) return "";
  const std::string &name = first.scope.name;
  if (row.ends_with(name)) row.replace(row.size() - name.size(), name.size(), group.name);
  return fmt::format("add {} on {}", row, names[*missing_side(first)]);
}

bool has_mode_change(const Patch &patch) {
  const Field &mode = *field_of_parameter(STP_MCEC_TYPE1_STP_MODE, 0);
  const std::vector<std::string> path = {mode.table, mode.key, mode.name};
  return std::ranges::any_of(patch, [&](const PatchOperation &operation) {
    return std::equal(operation.path.begin(), operation.path.end(), path.begin(),
                      path.begin() + std::ptrdiff_t(operation.path.size()));
  });
}

bool has_mode_change(const ParameterReport &parameter) {
  return parameter.type == STP_MCEC_TYPE1_STP_MODE && parameter.fix &&
         (parameter.fix->fix.alone[0] || parameter.fix->fix.alone[1]);
}

}  // namespace lab
