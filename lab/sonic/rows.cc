#include "sonic/rows.h"

#include <algorithm>
#include <array>
#include <optional>

#include "draimiofaf/types.h"
#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr uint32_t last_revision = 65535;
constexpr std::size_t name_bytes = 32;
// A channel's id is its number, unless that leaves no room in the index of its port.
constexpr uint32_t last_id = 0x00FFFFFF;

// The fields that say something, by table.
const std::map<std::string, std::set<std::string>> fields_read = {
    {"DEVICE_METADATA", {"mac", "hostname"}},
    {"STP", {"mode"}},
    {"VLAN", {}},
    {"VLAN_MEMBER", {}},
    {"STP_VLAN", {"enabled"}},
    {"STP_MST", {"name", "revision"}},
    {"STP_MST_INST", {"vlan_list"}},
    {"STP_PORT", {"edge_port", "portfast", "root_guard"}},
    {"MCLAG_DOMAIN", {"peer_link", "source_ip", "peer_ip"}},
    {"MCLAG_INTERFACE", {}},
};

// What a port is set to.
struct PortRow {
  bool edge_port = false;
  bool portfast = false;
  bool root_guard = false;
  std::map<std::string, std::string> uncovered;
};

// Reads every row, whatever the others say, so that all errors are told at once.
struct RowsReader {
  const Rows &rows;
  InputErrors errors;

  // --- errors ---

  static std::string place(const std::string &table, const std::string &key, const char *field) {
    return table + '|' + shown(key) + (field != nullptr ? ' ' + std::string(field) : "");
  }

  void add_error(const std::string &where, const std::string &found, const std::string &expected) {
    errors.push_back({0, 0, where, found, expected});
  }

  // --- rows and fields ---

  const std::map<std::string, Row> &table(const char *name) const {
    static const std::map<std::string, Row> none;
    const auto found = rows.find(name);
    return found != rows.end() ? found->second : none;
  }

  const Row &row(const char *of_table, const char *key) const {
    static const Row none;
    const auto found = table(of_table).find(key);
    return found != table(of_table).end() ? found->second : none;
  }

  // Nothing: there is no such field.
  std::optional<std::string> text(const char *of_table, const std::string &key, const Row &in,
                                  const char *field) {
    const auto found = in.find(field);
    if (found == in.end()) return std::nullopt;
    const auto *value = std::get_if<std::string>(&found->second);
    if (value == nullptr) add_error(place(of_table, key, field), "found a list", "a text");
    return value != nullptr ? std::optional(*value) : std::nullopt;
  }

  bool boolean(const char *of_table, const std::string &key, const Row &in, const char *field) {
    const auto value = text(of_table, key, in, field);
    if (value && *value != "true" && *value != "false") {
      add_error(place(of_table, key, field), "found " + quoted(*value), "true or false");
    }
    return value == "true";
  }

  // The parts of a key. Nothing after an error.
  std::vector<std::string_view> parts(const char *of_table, const std::string &key,
                                      std::size_t count, const char *expected) {
    std::vector<std::string_view> read = parts_of(key);
    const bool is_whole =
        std::none_of(read.begin(), read.end(), [](auto part) { return part.empty(); });
    if (read.size() == count && is_whole) return read;
    add_error(place(of_table, key, nullptr), "found the key " + quoted(key), expected);
    return {};
  }

  std::optional<uint32_t> vlan(const char *of_table, const std::string &key, std::string_view name,
                               const char *expected) {
    const auto number = vlan_of(name);
    if (number && *number >= first_vlan && *number <= last_vlan) return number;
    add_error(place(of_table, key, nullptr), "found " + quoted(name),
              number ? "a VLAN from 1 to 4094" : expected);
    return std::nullopt;
  }

  // --- tables ---

  Vlans vlans() {
    Vlans read;
    for (const auto &[key, fields] : table("VLAN")) {
      if (const auto number = vlan("VLAN", key, key, "a key like Vlan10")) read.set(*number);
    }
    return read;
  }

  std::map<std::string, Vlans, std::less<>> carried() {
    constexpr char expected[] = "a key like Vlan10|PortChannel10";
    std::map<std::string, Vlans, std::less<>> read;
    for (const auto &[key, fields] : table("VLAN_MEMBER")) {
      const auto names = parts("VLAN_MEMBER", key, 2, expected);
      if (names.empty()) continue;
      const auto number = vlan("VLAN_MEMBER", key, names[0], expected);
      if (number) read[std::string(names[1])].set(*number);
    }
    return read;
  }

  Vlans enabled() {
    Vlans read;
    for (const auto &[key, fields] : table("STP_VLAN")) {
      const auto number = vlan("STP_VLAN", key, key, "a key like Vlan10");
      if (boolean("STP_VLAN", key, fields, "enabled") && number) read.set(*number);
    }
    return read;
  }

  std::map<std::string, PortRow> ports() {
    std::map<std::string, PortRow> read;
    for (const auto &[key, fields] : table("STP_PORT")) {
      parts("STP_PORT", key, 1, "the name of an interface");
      PortRow port;
      port.edge_port = boolean("STP_PORT", key, fields, "edge_port");
      port.portfast = boolean("STP_PORT", key, fields, "portfast");
      port.root_guard = boolean("STP_PORT", key, fields, "root_guard");
      for (const auto &[field, value] : fields) {
        // NULL stands for the fields of a row that has none.
        if (is_read("STP_PORT", field) || field == "NULL") continue;
        std::string all;
        for (const std::string &member : members_of(value))
          all += (all.empty() ? "" : ",") + member;
        port.uncovered[field] = all;
      }
      read[key] = port;
    }
    return read;
  }

  std::vector<std::string> channels() {
    constexpr char expected[] = "a key like 1|PortChannel10";
    std::set<std::string> names;
    for (const auto &[key, fields] : table("MCLAG_INTERFACE")) {
      const auto both = parts("MCLAG_INTERFACE", key, 2, expected);
      if (both.empty()) continue;
      if (is_channel(both[1])) {
        names.emplace(both[1]);
      } else {
        add_error(place("MCLAG_INTERFACE", key, nullptr), "found " + quoted(both[1]), expected);
      }
    }
    std::vector<std::string> read(names.begin(), names.end());
    std::sort(read.begin(), read.end(), natural_less);
    return read;
  }

  void domain(Settings &settings) {
    settings.trunk = false;
    for (const auto &[key, fields] : table("MCLAG_DOMAIN")) {
      parts("MCLAG_DOMAIN", key, 1, "the number of a domain");
      const auto link = text("MCLAG_DOMAIN", key, fields, "peer_link");
      settings.trunk = settings.trunk || !link.value_or("").empty();
      const Peering peering = {text("MCLAG_DOMAIN", key, fields, "source_ip").value_or(""),
                               text("MCLAG_DOMAIN", key, fields, "peer_ip").value_or("")};
      if (peering != Peering{}) settings.peerings.push_back(peering);
    }
  }

  void device(Settings &settings) {
    const Row &fields = row("DEVICE_METADATA", "localhost");
    settings.name = text("DEVICE_METADATA", "localhost", fields, "hostname").value_or("");
    settings.address = text("DEVICE_METADATA", "localhost", fields, "mac").value_or("");
    if (has_controls(settings.name)) {
      add_error(place("DEVICE_METADATA", "localhost", "hostname"), "found " + quoted(settings.name),
                "a name without control characters");
    }
  }

  // Nothing: spanning tree is off, or after an error.
  std::optional<uint32_t> mode() {
    const auto word = text("STP", "GLOBAL", row("STP", "GLOBAL"), "mode");
    if (word == "pvst") return STP_MCEC_STP_MODE_RAPID_PVST;
    if (word == "mst") return STP_MCEC_STP_MODE_MST;
    if (word && word != "none") {
      add_error(place("STP", "GLOBAL", "mode"), "found " + quoted(*word), "pvst, mst or none");
    }
    return std::nullopt;
  }

  // --- the region ---

  void check_name(const std::string &where, const std::string &name) {
    if (has_controls(name)) {
      add_error(where, "found " + quoted(name), "a region name without control characters");
    }
    if (name.size() > name_bytes) {
      add_error(where, "found " + quoted(name) + ", " + std::to_string(name.size()) + " bytes",
                "a region name of at most 32 bytes");
    }
  }

  // Has an error been told of one of the places from which the region can have its name?
  bool name_is_in_doubt() const {
    static const std::set<std::string> places = {
        "DEVICE_METADATA", "DEVICE_METADATA|localhost", "DEVICE_METADATA|localhost mac", "STP_MST",
        "STP_MST|GLOBAL",  "STP_MST|GLOBAL name"};
    return std::any_of(errors.begin(), errors.end(),
                       [](const InputError &told) { return places.contains(told.where); });
  }

  std::string region_name(bool is_needed, const std::string &address) {
    const std::string where = place("STP_MST", "GLOBAL", "name");
    std::string name = text("STP_MST", "GLOBAL", row("STP_MST", "GLOBAL"), "name").value_or("");
    check_name(where, name);
    if (!name.empty() || !is_needed) return name;
    check_name(place("DEVICE_METADATA", "localhost", "mac"), address);
    if (address.empty() && !name_is_in_doubt()) {
      add_error(where, "found neither a name of the region nor an address of the switch",
                "one of them in mst");
    }
    return address;
  }

  uint32_t revision() {
    const auto value = text("STP_MST", "GLOBAL", row("STP_MST", "GLOBAL"), "revision");
    if (!value) return 0;
    const auto number = decimal(*value);
    if (number && *number <= last_revision) return *number;
    add_error(place("STP_MST", "GLOBAL", "revision"), "found " + quoted(*value),
              "a number from 0 to 65535");
    return 0;
  }

  Vlans vlans_of_list(const std::string &key, const Row &fields) {
    Vlans read;
    const auto list = fields.find("vlan_list");
    if (list == fields.end()) return read;
    for (const std::string &member : members_of(list->second)) {
      const ParsedRanges parsed = parse_member(member);
      read |= vlans_of(parsed.ranges);
      if (parsed.fault == RangeFault::none) continue;
      add_error(place("STP_MST_INST", key, "vlan_list"), "found " + quoted(member),
                parsed.fault == RangeFault::reversed ? "a range from the lower to the higher VLAN"
                : parsed.fault == RangeFault::too_great
                    ? "VLANs from 1 to 4094"
                    : "VLANs like 10, 10-20, Vlan10 or Vlan10-Vlan20");
    }
    return read;
  }

  Bytes vlan_map() {
    struct Instance {
      std::string key;
      Vlans vlans;
    };
    std::map<uint32_t, Instance> instances;
    for (const auto &[key, fields] : table("STP_MST_INST")) {
      const auto number = instance_of_key(key);
      const Vlans vlans = vlans_of_list(key, fields);
      if (!number || *number > last_instance) {
        add_error(place("STP_MST_INST", key, nullptr), "found the key " + quoted(key),
                  number ? "an instance from 0 to 4094" : "a key like MST_INSTANCE|1");
        continue;
      }
      const auto [at, is_new] = instances.try_emplace(*number, Instance{key, {}});
      at->second.vlans |= vlans;
      if (!is_new) {
        add_error(place("STP_MST_INST", key, nullptr),
                  "found instance " + std::to_string(*number) + " again, which is " +
                      quoted(at->second.key) + " too",
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
        add_error(
            place("STP_MST_INST", instance.key, "vlan_list"),
            "found " + vlan_words(both) + ", which " + quoted(instances[other].key) + " has too",
            "each VLAN in one instance");
      }
    }
    return map;
  }

  // --- the whole ---

  // The channels with the VLANs that they carry, and a port each.
  void add_channels(Settings &settings, std::optional<uint32_t> runs) {
    const auto members = carried();
    const auto port_rows = ports();
    std::set<uint32_t> ids;
    for (const std::string &name : channels()) {
      Channel channel{name, 0, false, {}};
      const uint32_t number = *decimal(name.substr(std::string_view("PortChannel").size()));
      const bool is_usual = name == "PortChannel" + std::to_string(number);
      if (is_usual && number > 0 && number <= last_id) ids.insert(channel.id = number);
      if (const auto found = members.find(name); found != members.end()) {
        channel.vlans = found->second & settings.user_vlans;
      }
      settings.channels.push_back(channel);
    }
    uint32_t free_id = 1;
    for (Channel &channel : settings.channels) {
      if (channel.id == 0) {
        while (!ids.insert(free_id).second) ++free_id;
        channel.id = free_id;
      }
      const auto found = port_rows.find(channel.name);
      const PortRow set = found != port_rows.end() ? found->second : PortRow{};
      Port port;
      port.index = first_channel_index + channel.id;
      port.name = channel.name;
      port.channel = channel.id;
      port.uncovered = set.uncovered;
      if (runs) {
        const bool is_edge = *runs == STP_MCEC_STP_MODE_MST ? set.edge_port : set.portfast;
        port.parameters = {{STP_MCEC_TYPE1_IFI_PORT_TYPE, word(is_edge ? 1 : 0)},
                           {STP_MCEC_TYPE1_IFI_PORT_GUARD, word(set.root_guard ? 1 : 0)}};
      }
      settings.ports.push_back(port);
    }
    std::sort(settings.ports.begin(), settings.ports.end(),
              [](const Port &a, const Port &b) { return a.index < b.index; });
  }

  Settings settings() {
    Settings read;
    device(read);
    const std::optional<uint32_t> runs = mode();
    read.spanning_tree = runs.has_value();
    read.user_vlans = vlans();
    const Vlans with_spanning_tree = enabled();
    Bytes name(name_bytes);
    const std::string region = region_name(runs == STP_MCEC_STP_MODE_MST, read.address);
    std::copy_n(region.begin(), std::min(region.size(), name_bytes), name.begin());
    const uint32_t region_revision = revision();
    const Bytes map = vlan_map();
    if (runs) read.parameters.push_back({STP_MCEC_TYPE1_STP_MODE, word(*runs)});
    if (runs == STP_MCEC_STP_MODE_RAPID_PVST) {
      read.parameters.push_back(
          {STP_MCEC_TYPE1_STP_ENDIS, vlan_record(read.user_vlans & ~with_spanning_tree)});
    }
    if (runs == STP_MCEC_STP_MODE_MST) {
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_NAME, name});
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_REVISION, word(region_revision)});
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_VI_MAP, map});
    }
    domain(read);
    add_channels(read, runs);
    return read;
  }
};

}  // namespace

const std::set<std::string> &tables_read() {
  static const std::set<std::string> tables = [] {
    std::set<std::string> names;
    for (const auto &[table, fields] : fields_read) names.insert(table);
    return names;
  }();
  return tables;
}

bool is_read(const std::string &table, const std::string &field) {
  const auto found = fields_read.find(table);
  return found != fields_read.end() && found->second.contains(field);
}

ReadSettings settings_of(const Rows &rows, const InputErrors &reading) {
  if (rows.empty()) {
    if (!reading.empty()) return {{}, reading};
    const std::vector<std::string> tables(tables_read().begin(), tables_read().end());
    return {{}, {{0, 0, "", "found none of the tables that are read", one_of(tables)}}};
  }
  RowsReader reader{rows, reading};
  Settings settings = reader.settings();
  return {std::move(settings), std::move(reader.errors)};
}

}  // namespace lab
