// The configuration of a real switch as rows, and its conversion to settings.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sonic/fields.h"
#include "switch/settings.h"

namespace lab {

using FieldValue = std::variant<std::string, std::vector<std::string>>;
using Row = std::map<std::string, FieldValue>;  // by field name
using Table = std::map<std::string, Row>;       // by key: "1|PortChannel10"
using Rows = std::map<std::string, Table>;      // by table name

// Returns an empty table if there is none of that name.
const Table &table_of(const Rows &rows, const std::string &name);

struct ReadRows {
  Rows rows;  // of the tables that are read
  InputErrors errors;
};

// Reads a dump in any of its forms and returns all errors at once. Accepts any bytes. `name_space`
// ("asic0") selects one part of a multi-ASIC dump.
ReadRows read_dump(std::string_view json, std::string_view name_space = {});

// Converts rows to settings. The errors are those of `reading` and those found in the rows.
ReadSettings interpret_rows(const Rows &rows, const InputErrors &reading = {});

// --- the notation of keys, numbers and lists of VLANs ---

constexpr uint32_t first_vlan = 1;
constexpr uint32_t last_vlan = 4094;
constexpr uint32_t last_instance = 4094;
constexpr std::size_t region_name_bytes = 32;

// Parses decimal digits only. Returns UINT32_MAX for a number that exceeds 32 bits.
std::optional<uint32_t> decimal(std::string_view text);

// Parses "Vlan10". The number may be out of range.
std::optional<uint32_t> vlan_of(std::string_view name);
std::string vlan_name(uint32_t vlan);

// Returns true for "PortChannel10".
bool is_channel(std::string_view name);

// Parses "MST_INSTANCE|1", "MST_INSTANCE:INSTANCE1" or "1". The number may be out of range.
std::optional<uint32_t> instance_of_key(std::string_view key);

// Returns the members of a list, which may be comma-separated text.
std::vector<std::string> members_of(const FieldValue &list);

// Returns the members as comma-separated text.
std::string joined(const FieldValue &value);

// Parses a member of a list of VLANs: "10", "10-20", "Vlan10" or "Vlan10-Vlan20".
ParsedRanges parse_member(std::string_view member);

// Returns input text for an error message: printable, and cut to a limit.
std::string shorten(std::string_view text);
std::string quote(std::string_view text);  // the same, in quotation marks

// Returns the place of an error: "STP_PORT|PortChannel10 root_guard"; without a field, the row.
std::string row_place(const std::string &table, std::string_view key, std::string_view field = "");

}  // namespace lab
