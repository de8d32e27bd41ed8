#include "sonic/rows.h"

#include <algorithm>
#include <set>

#include "draimiofaf/types.h"
#include "switch/values.h"

namespace lab {
namespace {

// A channel's id is its number, unless that does not fit into the index of its port.
constexpr uint32_t last_id = 0x00FFFFFF;

constexpr std::size_t max_errors = 10000;  // limits the memory for them

struct NamedRow {
  const char *table;
  std::string key;
  const Row &fields;
};

// Reads every row, even those that the result does not need, so that all errors are reported at
// once.
struct RowsReader {
  const Rows &rows;
  InputErrors errors;

  void add_error(const NamedRow &row, const char *field, const std::string &found,
                 const std::string &expected) {
    if (errors.size() >= max_errors) return;
    errors.push_back({0, 0, row_place(row.table, row.key, field), "found " + found, expected});
  }

  std::vector<NamedRow> rows_of(const char *table) const {
    std::vector<NamedRow> all;
    for (const auto &[key, fields] : table_of(rows, table)) all.push_back({table, key, fields});
    return all;
  }

  // Returns a row without fields if it does not exist.
  NamedRow row_of(const char *table, const std::string &key) const {
    static const Row none;
    const Table &all = table_of(rows, table);
    const auto found = all.find(key);
    return {table, key, found != all.end() ? found->second : none};
  }

  // Returns nullopt if the field does not exist or is a list.
  std::optional<std::string> read_text(const NamedRow &row, const char *field) {
    const auto found = row.fields.find(field);
    if (found == row.fields.end()) return std::nullopt;
    if (const auto *value = std::get_if<std::string>(&found->second)) return *value;
    add_error(row, field, "a list", "a string");
    return std::nullopt;
  }

  // Converts the text of a field as the table of fields defines it.
  std::optional<Bytes> read_value(const NamedRow &row, const char *field) {
    const auto written = read_text(row, field);
    if (!written) return std::nullopt;
    const Form &form = *find_field(row.table, field)->form;
    auto parsed = form.parse(*written);
    if (!parsed) add_error(row, field, quote(*written), form.expected);
    return parsed;
  }

  static Timers read_timers(const NamedRow &row) {
    Timers read;
    for (const auto &[field, written] : row.fields) {
      const Field *known = find_field(row.table, field);
      if (known != nullptr && known->use == FieldUse::noted) read[key_of(field)] = joined(written);
    }
    return read;
  }

  std::vector<std::string_view> split_key(const NamedRow &row, std::size_t count,
                                          const char *expected) {
    std::vector<std::string_view> read = split(row.key, '|');
    if (read.size() == count && std::find(read.begin(), read.end(), "") == read.end()) return read;
    add_error(row, "", "the key " + quote(row.key), expected);
    return {};
  }

  std::optional<uint32_t> check_vlan(const NamedRow &row, std::string_view name,
                                     const char *expected) {
    const auto number = vlan_of(name);
    if (number && *number >= first_vlan && *number <= last_vlan) return number;
    add_error(row, "", quote(name), number ? "a VLAN from 1 to 4094" : expected);
    return std::nullopt;
  }

  void check_name(const NamedRow &row, const char *field, const std::string &name) {
    if (has_controls(name)) {
      add_error(row, field, quote(name), "a region name without control characters");
    }
    if (name.size() > region_name_bytes) {
      add_error(row, field, quote(name) + ", " + std::to_string(name.size()) + " bytes",
                "a region name of at most 32 bytes");
    }
  }

  // `is_needed`: the switch runs MST. A region without a name is named after the switch's address.
  std::string read_region_name(bool is_needed, const std::string &address) {
    const NamedRow row = row_of("STP_MST", "GLOBAL");
    std::string name = read_text(row, "name").value_or("");
    check_name(row, "name", name);
    if (!name.empty() || !is_needed) return name;
    check_name(row_of("DEVICE_METADATA", "localhost"), "mac", address);
    using namespace std::string_view_literals;
    // The name or the address may be missing because of an error in their field, row or table.
    const auto explains = [](const InputError &error) {
      return !error.where.empty() && ("DEVICE_METADATA|localhost mac"sv.starts_with(error.where) ||
                                      "STP_MST|GLOBAL name"sv.starts_with(error.where));
    };
    if (address.empty() && std::none_of(errors.begin(), errors.end(), explains)) {
      add_error(row, "name", "neither a region name nor a switch address",
                "one of them in mst mode");
    }
    return address;
  }

  Vlans read_vlan_list(const NamedRow &row) {
    Vlans read;
    const auto list = row.fields.find("vlan_list");
    if (list == row.fields.end()) return {};
    for (const std::string &member : members_of(list->second)) {
      const ParsedRanges parsed = parse_member(member);
      read |= vlans_of(parsed.ranges);
      if (parsed.fault == RangeError::none) continue;
      add_error(row, "vlan_list", quote(member),
                parsed.fault == RangeError::reversed ? "a range from the lower to the higher VLAN"
                : parsed.fault == RangeError::out_of_range ? "VLANs from 1 to 4094"
                                                           : "VLANs like 10, 10-20, Vlan10 or "
                                                             "Vlan10-Vlan20");
    }
    return read;
  }

  std::map<uint32_t, std::pair<NamedRow, Vlans>> read_instances() {
    std::map<uint32_t, std::pair<NamedRow, Vlans>> read;
    for (const NamedRow &row : rows_of("STP_MST_INST")) {
      const auto number = instance_of_key(row.key);
      const Vlans vlans = read_vlan_list(row);
      if (!number || *number > last_instance) {
        add_error(row, "", "the key " + quote(row.key),
                  number ? "an instance from 0 to 4094" : "a key like MST_INSTANCE|1");
        continue;
      }
      const auto [at, is_new] = read.try_emplace(*number, row, Vlans{});
      at->second.second |= vlans;
      if (is_new) continue;
      add_error(row, "",
                "instance " + std::to_string(*number) + " again, already defined by " +
                    quote(at->second.first.key),
                "one key for each instance");
    }
    read.erase(0);  // its list is ignored: it has the VLANs that no other instance has
    return read;
  }

  Bytes read_region_map() {
    Bytes map(std::size_t{2} * vlan_count);
    const auto all = read_instances();
    for (const auto &[number, instance] : all) {
      const auto &[row, vlans] = instance;
      std::map<uint32_t, Vlans> repeated;  // by the instance that already has them
      for (uint32_t vlan = first_vlan; vlan <= last_vlan; ++vlan) {
        if (!vlans[vlan]) continue;
        const uint32_t owner = instance_of(map, vlan);
        if (owner == 0) set_instance(map, vlan, number);
        if (owner != 0) repeated[owner].set(vlan);
      }
      for (const auto &[owner, both] : repeated) {
        add_error(row, "vlan_list",
                  vlan_words(both) + ", also in " + quote(all.at(owner).first.key),
                  "each VLAN in one instance");
      }
    }
    return map;
  }

  void read_device(Settings &settings) {
    const NamedRow row = row_of("DEVICE_METADATA", "localhost");
    settings.name = read_text(row, "hostname").value_or("");
    settings.address = read_text(row, "mac").value_or("");
    if (has_controls(settings.name)) {
      add_error(row, "hostname", quote(settings.name), "a name without control characters");
    }
  }

  void read_vlans(Settings &settings) {
    for (const NamedRow &row : rows_of("VLAN")) {
      const auto number = check_vlan(row, row.key, "a key like Vlan10");
      if (number) settings.user_vlans.set(*number);
    }
  }

  // Returns the VLANs with spanning tree enabled, and sets the timers of all VLANs.
  Vlans read_spanning_tree_vlans(Settings &settings) {
    Vlans read;
    for (const NamedRow &row : rows_of("STP_VLAN")) {
      const auto number = check_vlan(row, row.key, "a key like Vlan10");
      const auto is_enabled = read_value(row, "enabled");
      if (!number) continue;
      read[*number] = is_enabled && word_of(*is_enabled) != 0;
      if (const Timers set = read_timers(row); !set.empty()) settings.vlan_timers[*number] = set;
    }
    return read;
  }

  void read_domains(Settings &settings) {
    settings.trunk = false;
    for (const NamedRow &row : rows_of("MCLAG_DOMAIN")) {
      split_key(row, 1, "the number of a domain");
      if (!read_text(row, "peer_link").value_or("").empty()) settings.trunk = true;
      settings.domains.push_back({row.key, read_text(row, "mclag_system_id"),
                                  read_text(row, "source_ip").value_or(""),
                                  read_text(row, "peer_ip").value_or("")});
    }
  }

  std::map<std::string, Vlans> read_members() {
    constexpr char expected[] = "a key like Vlan10|PortChannel10";
    std::map<std::string, Vlans> read;
    for (const NamedRow &row : rows_of("VLAN_MEMBER")) {
      const auto names = split_key(row, 2, expected);
      if (names.empty()) continue;
      const auto number = check_vlan(row, names[0], expected);
      if (number) read[std::string(names[1])].set(*number);
    }
    return read;
  }

  auto read_channel_names() {
    constexpr char expected[] = "a key like 1|PortChannel10";
    std::set<std::string, decltype(&natural_less)> names(natural_less);
    for (const NamedRow &row : rows_of("MCLAG_INTERFACE")) {
      const auto parts = split_key(row, 2, expected);
      if (parts.empty()) continue;
      if (is_channel(parts[1])) {
        names.emplace(parts[1]);
      } else {
        add_error(row, "", quote(parts[1]), expected);
      }
    }
    return names;
  }

  Port port_of(const Channel &channel, std::optional<uint32_t> mode) const {
    const NamedRow row = row_of("STP_PORT", channel.name);
    const auto is_set = [&row](const char *field) {
      const auto found = row.fields.find(field);
      return found != row.fields.end() && found->second == FieldValue("true");
    };
    Port port;
    port.index = first_channel_index + channel.id;
    port.name = channel.name;
    port.channel = channel.id;
    port.spanning_tree = is_set("enabled");
    for (const auto &[field, written] : row.fields) {
      const std::string all = joined(written);
      // The default is "auto" or off.
      const bool is_usual = all == (field == "link_type" ? "auto" : "false");
      if (find_field(row.table, field) == nullptr && !is_usual) port.uncovered[field] = all;
    }
    for (const uint16_t type : {STP_MCEC_TYPE1_IFI_PORT_TYPE, STP_MCEC_TYPE1_IFI_PORT_GUARD}) {
      if (!mode) continue;
      const char *field = field_of_parameter(type, *mode)->name;
      port.parameters.push_back({type, word_value(is_set(field) ? 1 : 0)});
    }
    return port;
  }

  // Reads the channels with their VLANs, and one port for each channel.
  void read_channels(Settings &settings, std::optional<uint32_t> mode) {
    auto members = read_members();
    for (const NamedRow &row : rows_of("STP_PORT")) {
      split_key(row, 1, "the name of an interface");
      for (const char *field : {"edge_port", "portfast", "root_guard", "enabled"}) {
        read_value(row, field);
      }
    }
    std::set<uint32_t> ids;
    for (const std::string &name : read_channel_names()) {
      Channel channel{name, 0, false, members[name] & settings.user_vlans};
      const uint32_t number = *decimal(name.substr(std::string_view("PortChannel").size()));
      const bool is_usual = name == "PortChannel" + std::to_string(number);
      if (is_usual && number > 0 && number <= last_id) ids.insert(channel.id = number);
      settings.channels.push_back(channel);
    }
    uint32_t free_id = 1;
    for (Channel &channel : settings.channels) {
      for (; channel.id == 0; ++free_id) {
        if (ids.insert(free_id).second) channel.id = free_id;
      }
      port_at(settings, first_channel_index + channel.id) = port_of(channel, mode);
    }
  }

  Settings read_settings() {
    Settings read;
    read_device(read);
    // An empty value means that spanning tree is off.
    const auto mode_value = read_value(row_of("STP", "GLOBAL"), "mode");
    const auto mode =
        mode_value && !mode_value->empty() ? std::optional(word_of(*mode_value)) : std::nullopt;
    read.spanning_tree = mode.has_value();
    read_vlans(read);
    const Vlans with_spanning_tree = read_spanning_tree_vlans(read);
    const std::string region = read_region_name(mode == STP_MCEC_STP_MODE_MST, read.address);
    const auto revision = read_value(row_of("STP_MST", "GLOBAL"), "revision");
    const Bytes map = read_region_map();
    if (mode == STP_MCEC_STP_MODE_RAPID_PVST) {
      const Vlans disabled = read.user_vlans & ~with_spanning_tree;
      read.parameters = {{STP_MCEC_TYPE1_STP_MODE, *mode_value},
                         {STP_MCEC_TYPE1_STP_ENDIS, vlan_record(disabled)}};
      read.timers = read_timers(row_of("STP", "GLOBAL"));
    } else {
      read.vlan_timers.clear();
    }
    if (mode == STP_MCEC_STP_MODE_MST) {
      const auto name = find_field("STP_MST", "name")->form->parse(region);
      read.parameters = {{STP_MCEC_TYPE1_STP_MODE, *mode_value},
                         {STP_MCEC_TYPE1_MST_REGION_NAME, name.value_or(Bytes{})},
                         {STP_MCEC_TYPE1_MST_REGION_REVISION, revision.value_or(word_value(0))},
                         {STP_MCEC_TYPE1_MST_REGION_VI_MAP, map}};
      read.timers = read_timers(row_of("STP_MST", "GLOBAL"));
    }
    read_domains(read);
    read_channels(read, mode);
    return read;
  }
};

}  // namespace

ReadSettings interpret_rows(const Rows &rows, const InputErrors &reading) {
  if (rows.empty()) {
    if (!reading.empty()) return {{}, reading};
    const std::vector<std::string> tables(tables_read().begin(), tables_read().end());
    return {{}, {{0, 0, "", "found none of the tables that are read", one_of(tables)}}};
  }
  RowsReader reader{rows, reading};
  Settings settings = reader.read_settings();
  return {std::move(settings), std::move(reader.errors)};
}

}  // namespace lab
