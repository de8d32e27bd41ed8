#include "sonic/fix.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "pair/scopes.h"
#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

// The name of a region whose two switches have none of their own.
constexpr char common_region[] = "region1";

// A parameter of the switch, or of a channel; nullptr: it is not sent.
const Entry *find_sent(const Settings &settings, const std::string &channel, uint16_t type) {
  if (channel.empty()) return find_entry(settings.parameters, type);
  const Port *port = port_of_channel(settings, channel);
  return port != nullptr ? find_entry(port->parameters, type) : nullptr;
}

Bytes value_in(const Settings &settings, uint16_t type) {
  const Entry *entry = find_entry(settings.parameters, type);
  return entry != nullptr ? entry->value : Bytes{};
}

const Table &table_of(const Rows &rows, const std::string &name) {
  static const Table none;
  const auto found = rows.find(name);
  return found != rows.end() ? found->second : none;
}

// --- what has to change on one side ---

// A side that is to follow the other.
struct Half {
  const Settings &own;
  const Rows &rows;
  const Settings &other;
  const Rows &other_rows;
};

// A change of one field, to what the other side has.
Change follow_field(const Half &half, const Field &field, const std::string &key,
                    const std::string &channel, uint16_t type) {
  const Entry *sent = find_sent(half.other, channel, type);
  return {field.table, key, field.name, field.print(sent != nullptr ? sent->value : Bytes{})};
}

Changes mode_changes(const Half &half, const Field &field) {
  Changes changes = {follow_field(half, field, field.key, "", field.type)};
  // In mst a region must have a name, which this side may never have needed.
  if (!settings_of(apply_changes(half.rows, changes)).errors.empty()) {
    const uint16_t name = STP_MCEC_TYPE1_MST_REGION_NAME;
    const Field &region = *field_of_parameter(name, STP_MCEC_STP_MODE_MST);
    changes.push_back(follow_field(half, region, region.key, "", name));
  }
  return changes;
}

// The twin VLANs on which spanning tree runs on one side only: all of them, and those on which it
// is this side.
std::pair<Vlans, Vlans> differing_vlans(const Settings &own, const Settings &other) {
  const Vlans ours = vlans_of_record(value_in(own, STP_MCEC_TYPE1_STP_ENDIS));
  const Vlans theirs = vlans_of_record(value_in(other, STP_MCEC_TYPE1_STP_ENDIS));
  const Vlans differ = (ours ^ theirs) & twin_vlans({&own, &other});
  return {differ, differ & theirs};
}

Changes vlan_changes(const Half &half, const Field &field) {
  Changes changes;
  const auto [differ, disabled] = differing_vlans(half.own, half.other);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!differ[vlan]) continue;
    const bool enable = !disabled[vlan];
    changes.push_back(
        {field.table, vlan_name(vlan), field.name, field.print(word(enable ? 1 : 0))});
  }
  return changes;
}

// How a switch spells its instances and their VLANs.
struct Spelling {
  std::map<uint32_t, std::string> keys;
  std::string prefix = "MST_INSTANCE|";
  std::string word;  // before a VLAN
  bool is_text = false;
};

void follow(Spelling &spelling, const Row &row, const Field &field) {
  const auto list = row.find(field.name);
  if (list == row.end()) return;
  spelling.is_text = std::holds_alternative<std::string>(list->second);
  for (const std::string &member : members_of(list->second)) {
    spelling.word = member.find("Vlan") != member.npos ? "Vlan" : "";
  }
}

Spelling spelling_of(const Table &instances, const Field &field) {
  Spelling spelling;
  for (const auto &[key, row] : instances) {
    spelling.prefix = key.substr(0, key.find_first_of("0123456789"));
    if (const auto instance = instance_of_key(key)) spelling.keys[*instance] = key;
    follow(spelling, row, field);
  }
  return spelling;
}

FieldValue list_of(const Vlans &vlans, const Spelling &spelling) {
  std::vector<std::string> members;
  for (const auto &[first, last] : ranges_of(vlans)) {
    members.push_back(spelling.word + std::to_string(first));
    if (last != first) members.back() += '-' + spelling.word + std::to_string(last);
  }
  if (!spelling.is_text) return members;
  return joined(members);
}

Changes map_changes(const Half &half, const Field &field) {
  const auto own = instances_of(value_in(half.own, STP_MCEC_TYPE1_MST_REGION_VI_MAP));
  const auto other = instances_of(value_in(half.other, STP_MCEC_TYPE1_MST_REGION_VI_MAP));
  const Table &rows = table_of(half.rows, field.table);
  // A side without instances learns to spell from the other.
  const Spelling usual =
      spelling_of(rows.empty() ? table_of(half.other_rows, field.table) : rows, field);
  const auto key_of_instance = [&usual](uint32_t instance) {
    const auto known = usual.keys.find(instance);
    return known != usual.keys.end() ? known->second : usual.prefix + std::to_string(instance);
  };
  Changes changes;
  for (const auto &[instance, vlans] : own) {
    if (!other.contains(instance)) {
      changes.push_back({field.table, key_of_instance(instance), field.name, std::nullopt});
    }
  }
  for (const auto &[instance, vlans] : other) {
    const auto ours = own.find(instance);
    if (ours != own.end() && ours->second == vlans) continue;
    const std::string key = key_of_instance(instance);
    Spelling spelling = usual;
    if (const auto row = rows.find(key); row != rows.end()) follow(spelling, row->second, field);
    changes.push_back({field.table, key, field.name, list_of(vlans, spelling)});
  }
  return changes;
}

// Nothing: the field cannot have the value of the other side.
std::optional<Changes> field_changes(const Half &half, const Field &field,
                                     const std::string &channel) {
  const Change change =
      follow_field(half, field, channel.empty() ? field.key : channel, channel, field.type);
  const Entry *sent = find_sent(half.other, channel, field.type);
  const auto read = field.parse(std::get<std::string>(*change.value));
  if (sent == nullptr || !read || *read != sent->value) return std::nullopt;
  return Changes{change};
}

std::optional<Changes> changes_of(const Half &half, const Field &field,
                                  const std::string &channel) {
  switch (field.type) {
    case STP_MCEC_TYPE1_STP_MODE:
      return mode_changes(half, field);
    case STP_MCEC_TYPE1_STP_ENDIS:
      return vlan_changes(half, field);
    case STP_MCEC_TYPE1_MST_REGION_VI_MAP:
      return map_changes(half, field);
    default:
      return field_changes(half, field, channel);
  }
}

bool is_named_after_switch(const Settings &settings) {
  const Bytes name = value_in(settings, STP_MCEC_TYPE1_MST_REGION_NAME);
  return std::string(name.begin(), std::find(name.begin(), name.end(), 0)) == settings.address;
}

// --- what differs ---

std::vector<VlanGroup> vlan_groups(const PairOfSettings &settings) {
  const auto [differ, disabled_on_right] = differing_vlans(*settings[0], *settings[1]);
  std::vector<VlanGroup> groups;
  if (disabled_on_right.any()) groups.push_back({disabled_on_right, {0, 1}});
  const Vlans disabled_on_left = differ & ~disabled_on_right;
  if (disabled_on_left.any()) groups.push_back({disabled_on_left, {1, 0}});
  return groups;
}

std::vector<VlanGroup> instance_groups(const PairOfSettings &settings) {
  const Bytes left = value_in(*settings[0], STP_MCEC_TYPE1_MST_REGION_VI_MAP);
  const Bytes right = value_in(*settings[1], STP_MCEC_TYPE1_MST_REGION_VI_MAP);
  std::map<std::array<uint32_t, 2>, Vlans> moves;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    const std::array<uint32_t, 2> words = {instance_of(left, vlan), instance_of(right, vlan)};
    if (words[0] != words[1]) moves[words].set(vlan);
  }
  std::vector<VlanGroup> groups;
  for (const auto &[words, vlans] : moves) groups.push_back({vlans, words});
  return groups;
}

}  // namespace

Fix find_fix(const PairOfSettings &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type, bool is_intended) {
  Fix fix;
  fix.type = type;
  fix.channel = channel;
  for (std::size_t side = 0; side < settings.size(); ++side) {
    const Entry *sent = find_sent(*settings[side], channel, type);
    if (sent != nullptr) fix.values[side] = sent->value;
  }
  const bool is_sent_by_both = fix.values[0] && fix.values[1];
  if (is_sent_by_both && type == STP_MCEC_TYPE1_STP_ENDIS) fix.groups = vlan_groups(settings);
  if (is_sent_by_both && type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    fix.groups = instance_groups(settings);
  }
  if (rows[0] == nullptr && rows[1] == nullptr) return fix;
  if (!is_sent_by_both) {
    fix.kind = Fix::Kind::with_mode;
    fix.field = field_of_parameter(STP_MCEC_TYPE1_STP_MODE, 0);
    return fix;
  }
  if (type == STP_MCEC_TYPE1_MST_REGION_NAME && !is_intended && rows[0] != nullptr &&
      rows[1] != nullptr && is_named_after_switch(*settings[0]) &&
      is_named_after_switch(*settings[1])) {
    fix.kind = Fix::Kind::common_name;
    fix.field = field_of_parameter(type, STP_MCEC_STP_MODE_MST);
    const Changes named = {{fix.field->table, fix.field->key, fix.field->name, common_region}};
    fix.both = {named, named};
    return fix;
  }
  static const Rows no_rows;
  for (std::size_t side = 0; side < settings.size(); ++side) {
    if (rows[side] == nullptr || (is_intended && side == 0)) continue;
    const Settings &own = *settings[side];
    // In two modes a parameter may have two fields.
    const Field *field = field_of_parameter(type, running_mode(own).value_or(0));
    if (field == nullptr) continue;
    if (fix.field == nullptr) fix.field = field;
    const Rows &other_rows = rows[1 - side] != nullptr ? *rows[1 - side] : no_rows;
    fix.alone[side] =
        changes_of({own, *rows[side], *settings[1 - side], other_rows}, *field, channel);
  }
  return fix;
}

std::string find_channel_row(const Settings &settings, const Settings &peer,
                             const std::string &channel) {
  std::string domain = "1";
  for (const Settings *of : {&peer, &settings}) {
    if (!of->domains.empty()) domain = of->domains.front().id;
  }
  return "MCLAG_INTERFACE|" + domain + '|' + channel;
}

}  // namespace lab
