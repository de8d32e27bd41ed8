// The configuration of a real switch as rows, and the settings that they say.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sonic/fields.h"
#include "switch/settings.h"

namespace lab {

// A field's value: a text, or a list of texts.
using FieldValue = std::variant<std::string, std::vector<std::string>>;

// Field by name.
using Row = std::map<std::string, FieldValue>;

// Row by key ("1|PortChannel10"), and table by name.
using Table = std::map<std::string, Row>;
using Rows = std::map<std::string, Table>;

// Empty: there is none of that name.
const Table &table_of(const Rows &rows, const std::string &name);

struct ReadRows {
  Rows rows;  // of the tables that are read
  InputErrors errors;
};

// The rows of a dump in any of its forms. Reads any bytes and reports all errors at once. Of a dump
// of several ASICs, `name_space` ("asic0") selects one.
ReadRows read_dump(std::string_view json, std::string_view name_space = {});

// What the rows say. The errors are those of their reading, and every one in the rows.
ReadSettings settings_of(const Rows &rows, const InputErrors &reading = {});

// --- how a database spells its keys, its numbers and its lists of VLANs ---

constexpr uint32_t first_vlan = 1;
constexpr uint32_t last_vlan = 4094;
constexpr uint32_t last_instance = 4094;
constexpr std::size_t region_name_bytes = 32;

// Digits and nothing else; a number past 32 bits is the greatest.
std::optional<uint32_t> decimal(std::string_view text);

// "Vlan10", whether there can be such a VLAN or not.
std::optional<uint32_t> vlan_of(std::string_view name);
std::string vlan_name(uint32_t vlan);

// "PortChannel10".
bool is_channel(std::string_view name);

// "MST_INSTANCE|1", "MST_INSTANCE:INSTANCE1" and "1", whether there can be such an instance or not.
std::optional<uint32_t> instance_of_key(std::string_view key);

// A list of VLANs by its members, whichever way it is written.
std::vector<std::string> members_of(const FieldValue &list);

// The members with commas between them.
std::string joined(const FieldValue &value);

// A member of a list of VLANs: "10", "10-20", "Vlan10" or "Vlan10-Vlan20".
ParsedRanges parse_member(std::string_view member);

// A text from outside as an error shows it: fit for a terminal, and not too long for one.
std::string shorten(std::string_view text);
std::string quote(std::string_view text);  // in quotation marks

// "STP_PORT|PortChannel10 root_guard"; without a field the row.
std::string row_place(const std::string &table, std::string_view key, std::string_view field = "");

}  // namespace lab
