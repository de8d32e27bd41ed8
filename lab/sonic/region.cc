#include <algorithm>
#include <map>
#include <set>

#include "sonic/rows_reader.h"
#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

void check_name(RowsReader &reader, const std::string &where, const std::string &name) {
  if (has_controls(name)) {
    reader.add_error(where, "found " + quote(name), "a region name without control characters");
  }
  if (name.size() > region_name_bytes) {
    reader.add_error(where, "found " + quote(name) + ", " + std::to_string(name.size()) + " bytes",
                     "a region name of at most 32 bytes");
  }
}

// Is there an error where the region can have its name from?
bool is_name_in_doubt(const InputErrors &errors) {
  static const std::set<std::string> places = {
      "DEVICE_METADATA", "DEVICE_METADATA|localhost", "DEVICE_METADATA|localhost mac", "STP_MST",
      "STP_MST|GLOBAL",  "STP_MST|GLOBAL name"};
  return std::any_of(errors.begin(), errors.end(),
                     [](const InputError &error) { return places.contains(error.where); });
}

Vlans vlans_of_list(RowsReader &reader, const std::string &key, const Row &fields) {
  Vlans read;
  const auto list = fields.find("vlan_list");
  if (list == fields.end()) return read;
  for (const std::string &member : members_of(list->second)) {
    const ParsedRanges parsed = parse_member(member);
    read |= vlans_of(parsed.ranges);
    if (parsed.fault == RangeFault::none) continue;
    reader.add_error(
        RowsReader::place("STP_MST_INST", key, "vlan_list"), "found " + quote(member),
        parsed.fault == RangeFault::reversed    ? "a range from the lower to the higher VLAN"
        : parsed.fault == RangeFault::too_great ? "VLANs from 1 to 4094"
                                                : "VLANs like 10, 10-20, Vlan10 or Vlan10-Vlan20");
  }
  return read;
}

}  // namespace

std::string region_name(RowsReader &reader, bool is_needed, const std::string &address) {
  const std::string where = RowsReader::place("STP_MST", "GLOBAL", "name");
  std::string name =
      reader.text("STP_MST", "GLOBAL", reader.row("STP_MST", "GLOBAL"), "name").value_or("");
  check_name(reader, where, name);
  if (!name.empty() || !is_needed) return name;
  check_name(reader, RowsReader::place("DEVICE_METADATA", "localhost", "mac"), address);
  if (address.empty() && !is_name_in_doubt(reader.errors)) {
    reader.add_error(where, "found neither a name of the region nor an address of the switch",
                     "one of them in mst");
  }
  return address;
}

Bytes region_revision(RowsReader &reader) {
  const Row &row = reader.row("STP_MST", "GLOBAL");
  return reader.value("STP_MST", "GLOBAL", row, "revision").value_or(word(0));
}

Bytes region_map(RowsReader &reader) {
  struct Instance {
    std::string key;
    Vlans vlans;
  };
  std::map<uint32_t, Instance> instances;
  for (const auto &[key, fields] : reader.table("STP_MST_INST")) {
    const auto number = instance_of_key(key);
    const Vlans vlans = vlans_of_list(reader, key, fields);
    if (!number || *number > last_instance) {
      reader.add_error(RowsReader::place("STP_MST_INST", key, nullptr),
                       "found the key " + quote(key),
                       number ? "an instance from 0 to 4094" : "a key like MST_INSTANCE|1");
      continue;
    }
    const auto [at, is_new] = instances.try_emplace(*number, Instance{key, {}});
    at->second.vlans |= vlans;
    if (!is_new) {
      reader.add_error(RowsReader::place("STP_MST_INST", key, nullptr),
                       "found instance " + std::to_string(*number) + " again, which is " +
                           quote(at->second.key) + " too",
                       "an instance in one spelling");
    }
  }
  instances.erase(0);  // what it lists says nothing: it has what the others leave

  Bytes map(std::size_t{2} * vlan_count);
  for (const auto &[number, instance] : instances) {
    std::map<uint32_t, Vlans> taken;
    for (uint32_t v = first_vlan; v <= last_vlan; ++v) {
      if (!instance.vlans[v]) continue;
      if (const uint32_t other = instance_of(map, v); other != 0) {
        taken[other].set(v);
      } else {
        set_instance(map, v, number);
      }
    }
    for (const auto &[other, both] : taken) {
      reader.add_error(
          RowsReader::place("STP_MST_INST", instance.key, "vlan_list"),
          "found " + vlan_words(both) + ", which " + quote(instances[other].key) + " has too",
          "each VLAN in one instance");
    }
  }
  return map;
}

}  // namespace lab
