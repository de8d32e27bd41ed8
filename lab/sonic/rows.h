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

}  // namespace lab
