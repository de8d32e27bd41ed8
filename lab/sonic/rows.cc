#include "sonic/rows.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "draimiofaf/types.h"
#include "sonic/rows_reader.h"
#include "sonic/spelling.h"
#include "switch/values.h"

namespace lab {
namespace {

// A channel's id is its number, unless that is too large for the index of its port.
constexpr uint32_t last_id = 0x00FFFFFF;

// What a port is set to.
struct PortRow {
  std::set<std::string> flags;  // fields that are true
  std::map<std::string, std::string> uncovered;

  bool has(const std::string &flag) const { return flags.contains(flag); }
};

struct SettingsReader : RowsReader {
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

  // The VLANs on which spanning tree is enabled, and their timers.
  std::pair<Vlans, std::map<uint32_t, Timers>> enabled() {
    std::pair<Vlans, std::map<uint32_t, Timers>> read;
    for (const auto &[key, fields] : table("STP_VLAN")) {
      const auto number = vlan("STP_VLAN", key, key, "a key like Vlan10");
      const bool is_enabled = boolean("STP_VLAN", key, fields, "enabled");
      if (!number) continue;
      read.first[*number] = is_enabled;
      const Timers set = timers("STP_VLAN", fields);
      if (!set.empty()) read.second[*number] = set;
    }
    return read;
  }

  std::map<std::string, PortRow> ports() {
    std::map<std::string, PortRow> read;
    for (const auto &[key, fields] : table("STP_PORT")) {
      parts("STP_PORT", key, 1, "the name of an interface");
      PortRow port;
      for (const char *field : {"edge_port", "portfast", "root_guard", "enabled"}) {
        if (boolean("STP_PORT", key, fields, field)) port.flags.insert(field);
      }
      for (const auto &[field, written] : fields) {
        const std::string text = joined(written);
        // What is not set is so, or off.
        const bool is_usual = text == (field == "link_type" ? "auto" : "false");
        if (find_field("STP_PORT", field) == nullptr && !is_usual) port.uncovered[field] = text;
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
        add_error(place("MCLAG_INTERFACE", key, nullptr), "found " + quote(both[1]), expected);
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
      settings.domains.push_back({key, text("MCLAG_DOMAIN", key, fields, "mclag_system_id"),
                                  text("MCLAG_DOMAIN", key, fields, "source_ip").value_or(""),
                                  text("MCLAG_DOMAIN", key, fields, "peer_ip").value_or("")});
    }
  }

  void device(Settings &settings) {
    const Row &fields = row("DEVICE_METADATA", "localhost");
    settings.name = text("DEVICE_METADATA", "localhost", fields, "hostname").value_or("");
    settings.address = text("DEVICE_METADATA", "localhost", fields, "mac").value_or("");
    if (has_controls(settings.name)) {
      add_error(place("DEVICE_METADATA", "localhost", "hostname"), "found " + quote(settings.name),
                "a name without control characters");
    }
  }

  // Nothing: spanning tree is off, or after an error.
  std::optional<uint32_t> mode() {
    const auto read = value("STP", "GLOBAL", row("STP", "GLOBAL"), "mode");
    return read && !read->empty() ? std::optional(word_of(*read)) : std::nullopt;
  }

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
      port.spanning_tree = set.has("enabled");
      port.uncovered = set.uncovered;
      for (const uint16_t type : {STP_MCEC_TYPE1_IFI_PORT_TYPE, STP_MCEC_TYPE1_IFI_PORT_GUARD}) {
        if (!runs) continue;
        const bool is_set = set.has(field_of_parameter(type, *runs)->name);
        port.parameters.push_back({type, word(is_set ? 1 : 0)});
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
    const auto [with_spanning_tree, vlan_timers] = enabled();
    const std::string region = region_name(*this, runs == STP_MCEC_STP_MODE_MST, read.address);
    const Bytes revision = region_revision(*this);
    const Bytes map = region_map(*this);
    if (runs) read.parameters.push_back({STP_MCEC_TYPE1_STP_MODE, word(*runs)});
    if (runs == STP_MCEC_STP_MODE_RAPID_PVST) {
      read.parameters.push_back(
          {STP_MCEC_TYPE1_STP_ENDIS, vlan_record(read.user_vlans & ~with_spanning_tree)});
      read.timers = timers("STP", row("STP", "GLOBAL"));
      read.vlan_timers = vlan_timers;
    }
    if (runs == STP_MCEC_STP_MODE_MST) {
      const auto name = find_field("STP_MST", "name")->parse(region);
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_NAME, name.value_or(Bytes{})});
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_REVISION, revision});
      read.parameters.push_back({STP_MCEC_TYPE1_MST_REGION_VI_MAP, map});
      read.timers = timers("STP_MST", row("STP_MST", "GLOBAL"));
    }
    domain(read);
    add_channels(read, runs);
    return read;
  }
};

}  // namespace

ReadSettings settings_of(const Rows &rows, const InputErrors &reading) {
  if (rows.empty()) {
    if (!reading.empty()) return {{}, reading};
    const std::vector<std::string> tables(tables_read().begin(), tables_read().end());
    return {{}, {{0, 0, "", "found none of the tables that are read", one_of(tables)}}};
  }
  SettingsReader reader{{rows, reading}};
  Settings settings = reader.settings();
  return {std::move(settings), std::move(reader.errors)};
}

}  // namespace lab
