#include "sonic/fields.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "sonic/rows.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr uint32_t last_revision = 65535;
constexpr uint32_t pvst = STP_MCEC_STP_MODE_RAPID_PVST;
constexpr uint32_t mst = STP_MCEC_STP_MODE_MST;

// --- conversions of values ---

std::optional<Bytes> parse_region(std::string_view text) {
  if (text.size() > region_name_bytes) return std::nullopt;
  Bytes value(text.begin(), text.end());
  value.resize(region_name_bytes);
  return value;
}

std::optional<Bytes> parse_revision(std::string_view text) {
  const auto number = decimal(text);
  return number && *number <= last_revision ? std::optional(word_value(*number)) : std::nullopt;
}

constexpr Form mode_form = {.expected = "pvst, mst or none",
                            // An empty value: "none" turns spanning tree off.
                            .parse = [](std::string_view text) -> std::optional<Bytes> {
                              if (text == "none") return Bytes{};
                              if (text != "pvst" && text != "mst") return std::nullopt;
                              return word_value(text == "mst" ? mst : pvst);
                            },
                            .print = [](const Bytes &value) -> std::string {
                              return word_of(value) == mst ? "mst" : "pvst";
                            }};

constexpr Form boolean_form = {.expected = "true or false",
                               .parse = [](std::string_view text) -> std::optional<Bytes> {
                                 if (text != "true" && text != "false") return std::nullopt;
                                 return word_value(text == "true" ? 1 : 0);
                               },
                               .print = [](const Bytes &value) -> std::string {
                                 return word_of(value) != 0 ? "true" : "false";
                               }};

constexpr Form revision_form = {
    .expected = "a number from 0 to 65535",
    .parse = parse_revision,
    .print = [](const Bytes &value) { return std::to_string(word_of(value)); }};

constexpr Form region_form = {.expected = "a region name of at most 32 bytes",
                              .parse = parse_region,
                              .print = [](const Bytes &value) {
                                return std::string(value.begin(),
                                                   std::find(value.begin(), value.end(), 0));
                              }};

// --- the table ---

constexpr Field row_of(const char *table, const char *key) {
  return {.table = table, .key = key, .name = "", .use = FieldUse::row};
}

constexpr Field text_field(const char *table, const char *key, const char *name) {
  return {.table = table, .key = key, .name = name};
}

constexpr Field noted(const char *table, const char *key, const char *name) {
  return {.table = table, .key = key, .name = name, .use = FieldUse::noted, .accepts_list = true};
}

constexpr Field value_of(uint16_t type, uint32_t mode, const char *table, const char *key,
                         const char *name, const Form &form) {
  return {.table = table, .key = key, .name = name, .type = type, .mode = mode, .form = &form};
}

constexpr Field field_table[] = {
    text_field("DEVICE_METADATA", "localhost", "mac"),
    text_field("DEVICE_METADATA", "localhost", "hostname"),
    value_of(STP_MCEC_TYPE1_STP_MODE, 0, "STP", "GLOBAL", "mode", mode_form),
    noted("STP", "GLOBAL", "forward_delay"),
    noted("STP", "GLOBAL", "hello_time"),
    noted("STP", "GLOBAL", "max_age"),
    row_of("VLAN", "VlanN"),
    row_of("VLAN_MEMBER", "VlanN|PortChannelN"),
    value_of(STP_MCEC_TYPE1_STP_ENDIS, pvst, "STP_VLAN", "VlanN", "enabled", boolean_form),
    noted("STP_VLAN", "VlanN", "forward_delay"),
    noted("STP_VLAN", "VlanN", "hello_time"),
    noted("STP_VLAN", "VlanN", "max_age"),
    value_of(STP_MCEC_TYPE1_MST_REGION_NAME, mst, "STP_MST", "GLOBAL", "name", region_form),
    value_of(STP_MCEC_TYPE1_MST_REGION_REVISION, mst, "STP_MST", "GLOBAL", "revision",
             revision_form),
    noted("STP_MST", "GLOBAL", "forward_delay"),
    noted("STP_MST", "GLOBAL", "hello_time"),
    noted("STP_MST", "GLOBAL", "max_age"),
    noted("STP_MST", "GLOBAL", "max_hops"),
    {.table = "STP_MST_INST",
     .key = "MST_INSTANCE|N",
     .name = "vlan_list",
     .accepts_list = true,
     .type = STP_MCEC_TYPE1_MST_REGION_VI_MAP,
     .mode = mst},
    value_of(STP_MCEC_TYPE1_IFI_PORT_TYPE, mst, "STP_PORT", "PortChannelN", "edge_port",
             boolean_form),
    value_of(STP_MCEC_TYPE1_IFI_PORT_TYPE, pvst, "STP_PORT", "PortChannelN", "portfast",
             boolean_form),
    value_of(STP_MCEC_TYPE1_IFI_PORT_GUARD, 0, "STP_PORT", "PortChannelN", "root_guard",
             boolean_form),
    value_of(0, 0, "STP_PORT", "PortChannelN", "enabled", boolean_form),
    text_field("MCLAG_DOMAIN", "N", "peer_link"),
    text_field("MCLAG_DOMAIN", "N", "source_ip"),
    text_field("MCLAG_DOMAIN", "N", "peer_ip"),
    text_field("MCLAG_DOMAIN", "N", "mclag_system_id"),
    row_of("MCLAG_INTERFACE", "N|PortChannelN"),
};

}  // namespace

std::span<const Field> fields() {
  return field_table;
}

const Field *find_field(std::string_view table, std::string_view name) {
  if (name.empty()) return nullptr;
  return find_in(field_table,
                 [=](const Field &field) { return field.table == table && field.name == name; });
}

const Field *field_of_parameter(uint16_t type, uint32_t mode) {
  return find_in(field_table, [=](const Field &field) {
    return field.type == type && type != 0 && (field.mode == 0 || field.mode == mode);
  });
}

std::vector<const Field *> find_fields(std::string_view word) {
  const std::string key = key_of(word);
  std::vector<const Field *> found;
  for (const Field &field : field_table) {
    const std::string table = key_of(field.table);
    const std::string name = key_of(field.name);
    if (key == table || (key == name && !name.empty()) || key == table + '|' + name) {
      found.push_back(&field);
    }
  }
  return found;
}

const std::set<std::string> &tables_read() {
  static const std::set<std::string> tables = [] {
    std::set<std::string> names;
    for (const Field &field : field_table) names.insert(field.table);
    return names;
  }();
  return tables;
}

bool is_read(std::string_view table, std::string_view field) {
  return table == "STP_PORT" || find_field(table, field) != nullptr;
}

}  // namespace lab
