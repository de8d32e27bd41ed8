#include "sonic/patch.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "pair/scopes.h"
#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr std::array<const char *, 2> names = {"left", "right"};

// The name of a region whose two switches have none of their own.
constexpr char common_region[] = "region1";

// Of the VLANs that differ, so many groups are told to a person.
constexpr std::size_t groups_told = 4;

const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [=](const Entry &entry) { return entry.type == type; });
  return found != entries.end() ? &*found : nullptr;
}

// A parameter of the switch, or of a channel; nullptr: it is not sent.
const Entry *find_entry(const Settings &settings, const std::string &channel, uint16_t type) {
  if (channel.empty()) return find_entry(settings.parameters, type);
  const Port *port = port_of_channel(settings, channel);
  return port != nullptr ? find_entry(port->parameters, type) : nullptr;
}

uint32_t word_in(const Settings &settings, const std::string &channel, uint16_t type) {
  const Entry *entry = find_entry(settings, channel, type);
  return entry != nullptr ? word_of(entry->value) : 0;
}

Bytes value_in(const Settings &settings, uint16_t type) {
  const Entry *entry = find_entry(settings.parameters, type);
  return entry != nullptr ? entry->value : Bytes{};
}

bool runs_mst(const Settings &settings) {
  return word_in(settings, "", STP_MCEC_TYPE1_STP_MODE) == STP_MCEC_STP_MODE_MST;
}

std::string region_name(const Settings &settings) {
  const Bytes value = value_in(settings, STP_MCEC_TYPE1_MST_REGION_NAME);
  return {value.begin(), std::find(value.begin(), value.end(), 0)};
}

std::string boolean(bool value) {
  return value ? "true" : "false";
}

const std::map<std::string, Row> &table_of(const Rows &rows, const std::string &name) {
  static const std::map<std::string, Row> none;
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

Changes mode_changes(const Half &half) {
  Changes changes = {{"STP", "GLOBAL", "mode", runs_mst(half.other) ? "mst" : "pvst"}};
  // In mst a region must have a name, which this side may never have needed.
  if (!settings_of(changed(half.rows, changes)).errors.empty()) {
    changes.push_back({"STP_MST", "GLOBAL", "name", region_name(half.other)});
  }
  return changes;
}

// The twin VLANs on which spanning tree runs on one side only: all of them, and those on which it is
// this side.
std::pair<Vlans, Vlans> differing_vlans(const Settings &own, const Settings &other) {
  const Vlans ours = vlans_of_record(value_in(own, STP_MCEC_TYPE1_STP_ENDIS));
  const Vlans theirs = vlans_of_record(value_in(other, STP_MCEC_TYPE1_STP_ENDIS));
  const Vlans differ = (ours ^ theirs) & twin_vlans({&own, &other});
  return {differ, differ & theirs};
}

Changes vlan_changes(const Half &half) {
  Changes changes;
  const auto [differ, disabled] = differing_vlans(half.own, half.other);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (differ[vlan]) {
      changes.push_back({"STP_VLAN", vlan_name(vlan), "enabled", boolean(!disabled[vlan])});
    }
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

void follow(Spelling &spelling, const Row &row) {
  const auto list = row.find("vlan_list");
  if (list == row.end()) return;
  spelling.is_text = std::holds_alternative<std::string>(list->second);
  for (const std::string &member : members_of(list->second)) {
    spelling.word = member.find("Vlan") != member.npos ? "Vlan" : "";
  }
}

Spelling spelling_of(const std::map<std::string, Row> &instances) {
  Spelling spelling;
  for (const auto &[key, row] : instances) {
    spelling.prefix = key.substr(0, key.find_first_of("0123456789"));
    if (const auto instance = instance_of_key(key)) spelling.keys[*instance] = key;
    follow(spelling, row);
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
  std::string text;
  for (const std::string &member : members) text += (text.empty() ? "" : ",") + member;
  return text;
}

Changes map_changes(const Half &half) {
  const auto own = instances_of(value_in(half.own, STP_MCEC_TYPE1_MST_REGION_VI_MAP));
  const auto other = instances_of(value_in(half.other, STP_MCEC_TYPE1_MST_REGION_VI_MAP));
  const auto &rows = table_of(half.rows, "STP_MST_INST");
  // A side without instances learns to spell from the other.
  const Spelling usual =
      spelling_of(rows.empty() ? table_of(half.other_rows, "STP_MST_INST") : rows);
  const auto key_of_instance = [&usual](uint32_t instance) {
    const auto known = usual.keys.find(instance);
    return known != usual.keys.end() ? known->second : usual.prefix + std::to_string(instance);
  };
  Changes changes;
  for (const auto &[instance, vlans] : own) {
    if (!other.contains(instance)) {
      changes.push_back({"STP_MST_INST", key_of_instance(instance), "vlan_list", std::nullopt});
    }
  }
  for (const auto &[instance, vlans] : other) {
    const auto ours = own.find(instance);
    if (ours != own.end() && ours->second == vlans) continue;
    const std::string key = key_of_instance(instance);
    Spelling spelling = usual;
    if (const auto row = rows.find(key); row != rows.end()) follow(spelling, row->second);
    changes.push_back({"STP_MST_INST", key, "vlan_list", list_of(vlans, spelling)});
  }
  return changes;
}

Changes port_changes(const Half &half, const std::string &channel, uint16_t type) {
  Changes changes;
  if (!half.rows.contains("STP_PORT")) {
    // Nothing is set here, and who adds the table adds the rows of all channels to which two fixes
    // belong: made together, patches that add the same thing take the place of one another.
    for (const Port &port : half.other.ports) {
      const bool has_two =
          std::all_of(port.parameters.begin(), port.parameters.end(),
                      [](const Entry &entry) { return word_of(entry.value) != 0; });
      if (has_two && find_channel(half.own, port.name) != nullptr) {
        changes.push_back({"STP_PORT", port.name, "", std::nullopt});
      }
    }
  }
  const char *field = type == STP_MCEC_TYPE1_IFI_PORT_GUARD ? "root_guard"
                      : runs_mst(half.own)                  ? "edge_port"
                                                            : "portfast";
  changes.push_back({"STP_PORT", channel, field, boolean(word_in(half.other, channel, type) != 0)});
  return changes;
}

// Nothing: this side has no field for it.
std::optional<Changes> changes_of(const Half &half, const std::string &channel, uint16_t type) {
  switch (type) {
    case STP_MCEC_TYPE1_STP_MODE:
      return mode_changes(half);
    case STP_MCEC_TYPE1_STP_ENDIS:
      return vlan_changes(half);
    case STP_MCEC_TYPE1_MST_REGION_NAME:
      return Changes{{"STP_MST", "GLOBAL", "name", region_name(half.other)}};
    case STP_MCEC_TYPE1_MST_REGION_REVISION:
      return Changes{
          {"STP_MST", "GLOBAL", "revision", std::to_string(word_in(half.other, "", type))}};
    case STP_MCEC_TYPE1_MST_REGION_VI_MAP:
      return map_changes(half);
    case STP_MCEC_TYPE1_IFI_PORT_TYPE:
    case STP_MCEC_TYPE1_IFI_PORT_GUARD:
      return port_changes(half, channel, type);
    default:
      return std::nullopt;
  }
}

bool is_named_after_switch(const Settings &settings) {
  return region_name(settings) == settings.address;
}

// --- for a person ---

std::string place_of(const Change &change) {
  return change.table + '|' + change.key + ' ' + change.field;
}

std::string value_text(const Change &change) {
  return shown(change.value ? std::get<std::string>(*change.value) : "nothing");
}

// "STP_PORT|PortChannel10 root_guard: true on right, or false on left".
std::string alternatives(const std::array<Changes, 2> &changes) {
  std::string text;
  std::string place;  // told last
  for (const std::size_t side : {std::size_t{1}, std::size_t{0}}) {
    std::string part;
    for (const Change &change : changes[side]) {
      if (change.field.empty()) continue;
      part += part.empty() ? "" : ", ";
      if (place_of(change) != place) part += place_of(change) + ": ";
      part += value_text(change);
      place = place_of(change);
    }
    text += (text.empty() ? "" : ", or ") + part + " on " + names[side];
  }
  return text;
}

// A group of VLANs and what either side has to do with them.
using Group = std::pair<Vlans, std::array<std::string, 2>>;

std::string groups_text(const std::string &what, const std::vector<Group> &groups) {
  std::string text;
  for (std::size_t i = 0; i < std::min(groups.size(), groups_told); ++i) {
    const auto &[vlans, values] = groups[i];
    text += (i == 0 ? what + ": " : "; ") + vlan_words(vlans) + " " + values[1] + " on right, or " +
            values[0] + " on left";
  }
  const std::size_t left = groups.size() - std::min(groups.size(), groups_told);
  return left > 0 ? text + "; and " + std::to_string(left) + " more groups of VLANs" : text;
}

// `on` and `off`: how a VLAN with spanning tree is written, and one without.
std::string vlans_text(const PairOfSettings &settings, const std::string &what,
                       const std::string &on, const std::string &off) {
  std::vector<Group> groups;
  const auto [differ, on_left] = differing_vlans(*settings[0], *settings[1]);
  const Vlans on_right = differ & ~on_left;
  if (on_left.any()) groups.push_back({on_left, {off, on}});
  if (on_right.any()) groups.push_back({on_right, {on, off}});
  return groups_text(what, groups);
}

std::string map_text(const PairOfSettings &settings, const std::string &what) {
  const Bytes left = value_in(*settings[0], STP_MCEC_TYPE1_MST_REGION_VI_MAP);
  const Bytes right = value_in(*settings[1], STP_MCEC_TYPE1_MST_REGION_VI_MAP);
  std::map<std::pair<uint32_t, uint32_t>, Vlans> moves;
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    const std::pair both = {instance_of(left, vlan), instance_of(right, vlan)};
    if (both.first != both.second) moves[both].set(vlan);
  }
  std::vector<Group> groups;
  groups.reserve(moves.size());
  for (const auto &[both, vlans] : moves) {
    groups.push_back({vlans,
                      {"in instance " + std::to_string(both.second),
                       "in instance " + std::to_string(both.first)}});
  }
  return groups_text(what, groups);
}

// "ifi-port-guard of PortChannel10: root on right, or none on left".
std::string in_words(const PairOfSettings &settings, const std::string &channel, uint16_t type) {
  const std::array<const Entry *, 2> entries = {find_entry(*settings[0], channel, type),
                                                find_entry(*settings[1], channel, type)};
  const bool have_both = entries[0] != nullptr && entries[1] != nullptr;
  if (have_both && type == STP_MCEC_TYPE1_STP_ENDIS) {
    return vlans_text(settings, parameter_key(type), "not listed", "listed");
  }
  if (have_both && type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    return map_text(settings, parameter_key(type));
  }
  const auto value = [&](std::size_t side) {
    return entries[side] != nullptr ? written(*entries[side]) : "nothing";
  };
  return parameter_key(type) + (channel.empty() ? "" : " of " + printable(channel)) + ": " +
         value(0) + " on right, or " + value(1) + " on left";
}

// --- patches ---

Json json_of(const FieldValue &value) {
  return std::visit([](const auto &snapshot) { return Json(snapshot); }, value);
}

// The names down to a place in a dump, as a JSON pointer.
std::string pointer(const std::vector<std::string> &steps) {
  std::string text;
  for (const std::string &step : steps) {
    text += '/';
    for (const char c : step) text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  }
  return text;
}

}  // namespace

Fix find_fix(const PairOfSettings &settings, const std::array<const Rows *, 2> &rows,
             const std::string &channel, uint16_t type) {
  Fix fix;
  if (rows[0] == nullptr || rows[1] == nullptr) {
    fix.text = in_words(settings, channel, type);
    return fix;
  }
  if (find_entry(*settings[0], channel, type) == nullptr ||
      find_entry(*settings[1], channel, type) == nullptr) {
    fix.text = "it goes with STP|GLOBAL mode";
    return fix;
  }
  const auto &[left, right] = settings;
  if (type == STP_MCEC_TYPE1_MST_REGION_NAME && is_named_after_switch(*left) &&
      is_named_after_switch(*right)) {
    const Changes named = {{"STP_MST", "GLOBAL", "name", common_region}};
    fix.both = {named, named};
    fix.text = place_of(named[0]) + ": one name on both, for instance " + common_region;
    return fix;
  }
  fix.alone = {changes_of({*left, *rows[0], *right, *rows[1]}, channel, type),
               changes_of({*right, *rows[1], *left, *rows[0]}, channel, type)};
  if (type == STP_MCEC_TYPE1_STP_ENDIS) {
    fix.text = vlans_text(settings, "STP_VLAN enabled", "true", "false");
  } else if (type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    fix.text = map_text(settings, "STP_MST_INST vlan_list");
  } else if (fix.alone[0] && fix.alone[1]) {
    fix.text = alternatives({*fix.alone[0], *fix.alone[1]});
  }
  return fix;
}

Rows changed(Rows rows, const Changes &changes) {
  for (const auto &[table, key, field, value] : changes) {
    Row &row = rows[table][key];
    if (field.empty()) continue;
    row.erase(field);
    if (value) row.emplace(field, *value);
  }
  return rows;
}

Patch patch_of(const Rows &rows, const Changes &changes) {
  // Tables and rows that are missing are added whole.
  Rows touched;
  for (const Change &change : changes) {
    const auto &of_table = table_of(rows, change.table);
    if (const auto row = of_table.find(change.key); row != of_table.end()) {
      touched[change.table].insert(*row);
    }
  }
  const Rows after = changed(std::move(touched), changes);
  Json patch = Json::array();
  const auto operation = [&](const char *op, const std::vector<std::string> &place) -> Json & {
    patch.push_back({{"op", op}, {"path", pointer(place)}});
    return patch.back();
  };
  const auto whole_row = [](const Row &row) {
    Json fields = Json::object();
    for (const auto &[field, value] : row) fields[field] = json_of(value);
    return fields;
  };
  for (const auto &[table, rows_after] : after) {
    const auto table_before = rows.find(table);
    if (table_before == rows.end()) {
      Json::object_t whole;  // its keys are new, and need no looking up
      for (const auto &[key, row] : rows_after) whole.emplace_back(key, whole_row(row));
      operation("add", {table})["value"] = std::move(whole);
      continue;
    }
    for (const auto &[key, row] : rows_after) {
      const auto row_before = table_before->second.find(key);
      if (row_before == table_before->second.end()) {
        operation("add", {table, key})["value"] = whole_row(row);
        continue;
      }
      for (const auto &[field, value] : row_before->second) {
        if (!row.contains(field)) operation("remove", {table, key, field});
      }
      for (const auto &[field, value] : row) {
        const auto field_before = row_before->second.find(field);
        if (field_before != row_before->second.end() && field_before->second == value) continue;
        const bool is_new = field_before == row_before->second.end();
        operation(is_new ? "add" : "replace", {table, key, field})["value"] = json_of(value);
      }
    }
  }
  return patch;
}

}  // namespace lab
