#include "sonic/fix.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "pair/scopes.h"
#include "switch/values.h"

namespace lab {
namespace {

using Op = PatchOperation::Op;

// The suggested region name if neither switch has one configured.
constexpr char common_region[] = "region1";

// Returns a parameter of the switch or of a channel, or nullptr if it is not sent.
const Entry *find_sent(const Settings &settings, const std::string &channel, uint16_t type) {
  if (channel.empty()) return find_entry(settings.parameters, type);
  const Port *port = find_channel_port(settings, channel);
  return port != nullptr ? find_entry(port->parameters, type) : nullptr;
}

Bytes value_in(const Settings &settings, uint16_t type, const std::string &channel = "") {
  const Entry *entry = find_sent(settings, channel, type);
  return entry != nullptr ? entry->value : Bytes{};
}

// --- changes of one side ---

// A side that copies a value of the other side.
struct FixedSide {
  const Settings &own;
  const Rows &rows;
  const Settings &other;
  const Rows &other_rows;
};

// Sets one field to the value of the other side.
Change copy_field(const FixedSide &fixed, const Field &field, const std::string &channel = "") {
  return {field.table, channel.empty() ? field.key : channel, field.name,
          field.form->print(value_in(fixed.other, field.type, channel))};
}

Changes mode_changes(const FixedSide &fixed, const Field &field) {
  Changes changes = {copy_field(fixed, field)};
  // MST mode requires a region name, which this side may lack.
  if (!interpret_rows(apply_changes(fixed.rows, changes)).errors.empty()) {
    changes.push_back(copy_field(
        fixed, *field_of_parameter(STP_MCEC_TYPE1_MST_REGION_NAME, STP_MCEC_STP_MODE_MST)));
  }
  return changes;
}

Changes vlan_changes(const FixedSide &fixed, const Field &field) {
  const Vlans own_vlans = vlans_of_record(value_in(fixed.own, field.type));
  const Vlans other_vlans = vlans_of_record(value_in(fixed.other, field.type));
  const Vlans differ = (own_vlans ^ other_vlans) & twin_vlans({&fixed.own, &fixed.other});
  Changes changes;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!differ[vlan]) continue;
    const Bytes is_enabled = word_value(other_vlans[vlan] ? 0 : 1);
    changes.push_back({field.table, vlan_name(vlan), field.name, field.form->print(is_enabled)});
  }
  return changes;
}

// The notation that a switch uses for its instances and their VLANs.
struct Spelling {
  std::map<uint32_t, std::string> keys;
  std::string prefix = "MST_INSTANCE|";
  std::string word;  // before a VLAN: "Vlan" or ""
  bool is_text = false;
};

void adopt_spelling(Spelling &spelling, const Row &row, const Field &field) {
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
    adopt_spelling(spelling, row, field);
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

Changes map_changes(const FixedSide &fixed, const Field &field) {
  const auto own = instances_of(value_in(fixed.own, field.type));
  const auto other = instances_of(value_in(fixed.other, field.type));
  const Table &rows = table_of(fixed.rows, field.table);
  // A side without instances uses the notation of the other.
  Spelling base = spelling_of(rows.empty() ? table_of(fixed.other_rows, field.table) : rows, field);
  const auto key_of_instance = [&base](uint32_t instance) {
    return base.keys.try_emplace(instance, base.prefix + std::to_string(instance)).first->second;
  };
  Changes changes;
  for (const auto &[instance, vlans] : own) {
    if (other.contains(instance)) continue;
    changes.push_back({field.table, key_of_instance(instance), field.name, std::nullopt});
  }
  for (const auto &[instance, vlans] : other) {
    const auto current = own.find(instance);
    if (current != own.end() && current->second == vlans) continue;
    const std::string key = key_of_instance(instance);
    Spelling spelling = base;
    if (const auto row = rows.find(key); row != rows.end())
      adopt_spelling(spelling, row->second, field);
    changes.push_back({field.table, key, field.name, list_of(vlans, spelling)});
  }
  return changes;
}

// Returns nullopt if the field cannot hold the value of the other side.
std::optional<Changes> changes_of(const FixedSide &fixed, const Field &field,
                                  const std::string &channel) {
  if (field.type == STP_MCEC_TYPE1_STP_MODE) return mode_changes(fixed, field);
  if (field.type == STP_MCEC_TYPE1_STP_ENDIS) return vlan_changes(fixed, field);
  if (field.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) return map_changes(fixed, field);
  const Change change = copy_field(fixed, field, channel);
  const Entry *sent = find_sent(fixed.other, channel, field.type);
  const auto read = field.form->parse(std::get<std::string>(*change.value));
  if (sent == nullptr || !read || *read != sent->value) return std::nullopt;
  return Changes{change};
}

bool is_named_after_switch(const Settings &settings) {
  const Bytes name = value_in(settings, STP_MCEC_TYPE1_MST_REGION_NAME);
  return std::string(name.begin(), std::find(name.begin(), name.end(), 0)) == settings.address;
}

// Groups the VLANs whose values differ by the pair of their values.
std::vector<VlanGroup> find_groups(const SettingsPairView &settings, uint16_t type) {
  const bool is_map = type == STP_MCEC_TYPE1_MST_REGION_VI_MAP;
  if (!is_map && type != STP_MCEC_TYPE1_STP_ENDIS) return {};
  const Vlans twins = twin_vlans(settings);
  std::array<Bytes, 2> values;
  std::array<Vlans, 2> disabled;
  for (std::size_t side = 0; side < settings.size(); ++side) {
    values[side] = value_in(*settings[side], type);
    if (!is_map) disabled[side] = vlans_of_record(values[side]) & twins;
  }
  const auto value_of_vlan = [&](std::size_t side, uint32_t vlan) {
    return is_map ? instance_of(values[side], vlan) : uint32_t{disabled[side][vlan]};
  };
  std::map<std::array<uint32_t, 2>, Vlans> groups;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    const std::array<uint32_t, 2> words = {value_of_vlan(0, vlan), value_of_vlan(1, vlan)};
    if (words[0] != words[1]) groups[words].set(vlan);
  }
  std::vector<VlanGroup> list;
  for (const auto &[words, vlans] : groups) list.push_back({vlans, words});
  return list;
}

// Adds the operations that change one row, field by field.
void patch_row(const std::string &table, const std::string &key, const Row &before,
               const Row &after, std::vector<PatchOperation> &patch) {
  for (const auto &[field, value] : before) {
    if (!after.contains(field)) patch.push_back({Op::remove, {table, key, field}, {}});
  }
  for (const auto &[field, value] : after) {
    const auto old = before.find(field);
    if (old != before.end() && old->second == value) continue;
    patch.push_back({old == before.end() ? Op::add : Op::replace, {table, key, field}, value});
  }
}

}  // namespace

Rows apply_changes(Rows rows, const Changes &changes) {
  for (const auto &[table, key, field, value] : changes) {
    Row &row = rows[table][key];
    row.erase(field);
    if (value) row.emplace(field, *value);
  }
  return rows;
}

std::vector<PatchOperation> make_patch(const Rows &rows, const Changes &changes) {
  Rows touched;
  for (const Change &change : changes) {
    const Table &table = table_of(rows, change.table);
    const auto row = table.find(change.key);
    if (row != table.end()) touched[change.table].insert(*row);
  }
  // A missing table or row is added in one operation.
  std::vector<PatchOperation> patch;
  for (const auto &[table, rows_after] : apply_changes(std::move(touched), changes)) {
    const Table &before = table_of(rows, table);
    if (!rows.contains(table)) {
      patch.push_back({Op::add, {table}, rows_after});
      continue;
    }
    for (const auto &[key, row] : rows_after) {
      const auto row_before = before.find(key);
      if (row_before == before.end()) {
        patch.push_back({Op::add, {table, key}, row});
      } else {
        patch_row(table, key, row_before->second, row, patch);
      }
    }
  }
  return patch;
}

Fix find_fix(const SettingsPairView &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type, bool is_intended) {
  static const Rows no_rows;
  Fix fix;
  fix.type = type;
  fix.channel = channel;
  for (std::size_t side = 0; side < settings.size(); ++side) {
    const Entry *sent = find_sent(*settings[side], channel, type);
    if (sent != nullptr) fix.values[side] = sent->value;
  }
  const bool is_sent_by_both = fix.values[0] && fix.values[1];
  if (is_sent_by_both) fix.groups = find_groups(settings, type);
  if (rows[0] == nullptr && rows[1] == nullptr) return fix;
  if (!is_sent_by_both) {
    // In one mode all dumps send the same parameters: a state file leaves this one out.
    if (running_mode(*settings[0]) == running_mode(*settings[1])) return fix;
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
  for (std::size_t side = 0; side < settings.size(); ++side) {
    if (rows[side] == nullptr || (is_intended && side == 0)) continue;
    const Settings &own = *settings[side];
    // The field of a parameter may depend on the mode.
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
  for (const Settings *source : {&peer, &settings}) {
    if (!source->domains.empty()) domain = source->domains.front().id;
  }
  return "MCLAG_INTERFACE|" + domain + '|' + channel;
}

}  // namespace lab
