#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "draimiofaf/types.h"
#include "output/words.h"
#include "sonic/rows.h"
#include "switch/values.h"

namespace lab {
namespace {

// Where a configuration dump has the parameter, the fix is in its words, else in those of commands.
constexpr Advice advice_table[] = {
    {STP_MCEC_TYPE1_STP_MODE,
     "The two halves of a channel send different BPDUs, so the device behind it hears two bridges "
     "where it should hear one. Between the switches themselves only one common tree is left.",
     "Give both the same mode: STP|GLOBAL mode, mst or pvst; or the command stp-mode."},
    {STP_MCEC_TYPE1_STP_ENDIS,
     "On such a VLAN one half of a channel forwards whatever comes, while the other follows the "
     "tree. A loop through the half without spanning tree is not broken.",
     "Let spanning tree run on the same VLANs of the channels: STP_VLAN|VlanN enabled, true or "
     "false on both; or the command stp-endis."},
    {STP_MCEC_TYPE1_MST_REGION_NAME,
     "The switches are two regions, and between regions all VLANs follow one common tree: what the "
     "instances spread over several links is blocked on all but one.",
     "Give both regions one name: STP_MST|GLOBAL name. Without a name a region is called after its "
     "switch's own address, so two of them never agree."},
    {STP_MCEC_TYPE1_MST_REGION_REVISION,
     "The switches are two regions, as with two names. It happens when a change of the region has "
     "reached one switch only.",
     "Make the change on the other, too, then the revision: STP_MST|GLOBAL revision, one number on "
     "both."},
    {STP_MCEC_TYPE1_MST_REGION_VI_MAP,
     "The digests of the maps differ, so the switches are two regions, as with two names. Where "
     "the common tree uses a link that does not carry a VLAN, that VLAN is cut off.",
     "Give each instance the same VLANs: STP_MST_INST|MST_INSTANCE|N vlan_list. It counts where a "
     "VLAN is, not in what order it is listed."},
    {STP_MCEC_TYPE1_LOOP_GUARD,
     "When BPDUs stop on a link that still carries frames, the switch with loop guard blocks its "
     "port and the other lets its own forward: a loop through the half without it.",
     "Switch it on on both, or off: the command gbl-loopguard. Dumps say nothing of it."},
    {STP_MCEC_TYPE1_BRIDGE_ASSURANCE,
     "A network port with bridge assurance is blocked when its neighbour is silent; a switch "
     "without it is silent on ports that only listen. Links go down although nothing is broken.",
     "Switch it on on both, or off: the command gbl-bridge-assurance. Dumps say nothing of it."},
    {STP_MCEC_TYPE1_GBL_PORT_TYPE,
     "Ports without a type of their own take this one: one half of a channel forwards at once, "
     "drops BPDUs or is shut down by one, where the other takes part in the tree.",
     "Give both the same defaults: the commands gbl-edge, gbl-edge-bpduguard, gbl-edge-bpdufilter "
     "and gbl-network. Dumps say nothing of them."},
    {STP_MCEC_TYPE1_GBL_MST_SIMULATE_PVST,
     "Where a device behind a channel runs Rapid-PVST, the half with the simulation talks to it "
     "and the other half is blocked.",
     "Switch it on on both, or off: the command gbl-mst-simulate-pvst. Dumps say nothing of it."},
    {STP_MCEC_TYPE1_IFI_PORT_TYPE,
     "One half of the channel forwards at once, the other waits for the tree. What is wired "
     "wrongly behind the channel loops through the edge half until the first BPDU comes.",
     "Give both halves one type: STP_PORT|PortChannelN edge_port in mst, portfast in pvst, true or "
     "false on both; or the command if-port-type."},
    {STP_MCEC_TYPE1_IFI_PORT_GUARD,
     "When a better bridge appears behind the channel, the half with root guard is blocked, and "
     "the other takes that bridge for the root: what is sent over the blocked half is lost.",
     "Guard both halves, or none: STP_PORT|PortChannelN root_guard, true or false on both; or the "
     "command if-guard."},
    {STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST,
     "Where the device behind the channel runs Rapid-PVST, the half with the simulation talks to "
     "it and the other half is blocked.",
     "Set both halves alike: the command if-mst-simulate-pvst. Dumps say nothing of it."},
};

// Sorted by type, with a row for each.
#define LAB_TYPE(name, type, ...) type,
constexpr uint16_t advised_types[] = {STP_MCEC_TYPE1_PARAMETERS(LAB_TYPE)};
#undef LAB_TYPE
static_assert(std::equal(std::begin(advice_table), std::end(advice_table),
                         std::begin(advised_types), std::end(advised_types),
                         [](const Advice &row, uint16_t type) { return row.type == type; }));

struct FieldMeaning {
  std::string_view table;
  std::string_view field;  // empty: the row, and every field that has no meaning of its own
  const char *meaning;
};

constexpr FieldMeaning field_meanings[] = {
    {"DEVICE_METADATA", "mac", "The switch's address; without a name, the region is called by it."},
    {"DEVICE_METADATA", "hostname", "The switch's name."},
    {"VLAN", "", "The VLAN exists."},
    {"VLAN_MEMBER", "",
     "The interface carries the VLAN. A VLAN that a multi-chassis channel carries on both switches "
     "is a twin: spanning tree must run on it on both, or on neither."},
    {"STP_PORT", "enabled", "Spanning tree runs on the interface; a difference is noted."},
    {"MCLAG_DOMAIN", "peer_link", "The peer link: without one, a multi-chassis channel is noted."},
    {"MCLAG_DOMAIN", "", "Names the peers of the domain; a difference is noted."},
    {"MCLAG_INTERFACE", "",
     "The channel is multi-chassis, and the channel of the same name on the peer is its other "
     "half. Where one switch lacks the row, add it there, or remove it from the other."},
    {"", "", "A timer; a difference is noted."},
};

// --- fixes ---

std::string place_text(const Change &change) {
  return change.table + '|' + change.key + ' ' + change.field;
}

// "true on right, or false on left": a fix names first what brings the right side into line. A side
// without a text is left out.
template <class Describe>
std::string describe_sides(const SideNames &names, Describe describe) {
  std::vector<std::string> texts;
  for (const std::size_t side : {1U, 0U}) {
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

// How a side would have the VLANs of a group.
std::string word_text(const Fix &fix, uint32_t word) {
  if (fix.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return "in instance " + std::to_string(word);
  if (fix.field != nullptr) return word != 0 ? "false" : "true";
  return word != 0 ? "listed" : "not listed";
}

std::string describe_vlan_groups(const Fix &fix, const SideNames &names) {
  constexpr std::size_t most_groups = 4;
  // A side of two that cannot be patched is left out.
  const bool is_any = !fix.alone[0] && !fix.alone[1];
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < std::min(fix.groups.size(), most_groups); ++i) {
    const VlanGroup &group = fix.groups[i];
    const auto describe = [&](std::size_t side) {
      return is_any || fix.alone[side] ? word_text(fix, group.words[1 - side]) : "";
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

// The fix for all scopes of its group.
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

const Advice &advice_on(uint16_t type) {
  return *std::ranges::find(advice_table, type, &Advice::type);
}

const char *field_meaning(const Field &field) {
  const auto is_meant = [&](const FieldMeaning &row) {
    return row.table.empty() ||
           (row.table == field.table && (row.field.empty() || row.field == field.name));
  };
  return std::ranges::find_if(field_meanings, is_meant)->meaning;
}

std::string describe_fix(const Fix &fix, const SideNames &names, const ScopeGroup *group) {
  if (group != nullptr) return describe_fix(widen_fix(fix, *group), names);
  if (!fix.groups.empty()) return describe_vlan_groups(fix, names);
  if (fix.kind == Fix::Kind::with_mode) {
    return fmt::format("it goes with {}|{} {}", fix.field->table, fix.field->key, fix.field->name);
  }
  if (fix.kind == Fix::Kind::common_name) {
    const Change &named = (*fix.both)[0][0];
    return place_text(named) + ": one name on both, for instance " + joined(*named.value);
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
