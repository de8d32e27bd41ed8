// The configuration of a real switch as rows, and the settings that they say.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "switch/settings.h"
#include "text/error.h"

namespace lab {

// A field's value: a text, or a list of texts.
using FieldValue = std::variant<std::string, std::vector<std::string>>;

// Field by name.
using Row = std::map<std::string, FieldValue>;

// Table by name, row by key ("1|PortChannel10").
using Rows = std::map<std::string, std::map<std::string, Row>>;

// The tables whose rows say something about spanning tree; all others are passed over.
const std::set<std::string> &tables_read();

// Does a field of a table that is read say something? Others are passed over, but for those of
// STP_PORT, of which the notes speak.
bool is_read(const std::string &table, const std::string &field);

struct ReadRows {
  Rows rows;  // of the tables that are read
  InputErrors errors;
};

// The rows of a dump, a JSON object of tables. Reads any bytes; errors are all told at once.
ReadRows read_dump(std::string_view json);

struct ReadSettings {
  Settings settings;
  InputErrors errors;  // with some, the settings are of no use
};

// What the rows say. The errors are those of their reading, and every one in the rows.
ReadSettings settings_of(const Rows &rows, const InputErrors &reading = {});

}  // namespace lab
