// The tables and fields of a configuration database that matter to spanning tree, with the
// parameters that they set: one table for reading, patches and explanations.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/text.h"

namespace lab {

enum class FieldUse : uint8_t {
  row,    // no field: the existence of the row matters
  read,   // an invalid value is an error
  noted,  // for notes only: any value is valid
};

// Converts the text of a field to the value of a parameter, in network byte order, and back.
struct Form {
  const char *expected;  // for error messages
  std::optional<Bytes> (*parse)(std::string_view text);
  std::string (*print)(const Bytes &value);
};

struct Field {
  const char *table;
  const char *key;   // as documentation writes it: "GLOBAL", "VlanN"
  const char *name;  // empty: the row itself
  FieldUse use = FieldUse::read;
  bool accepts_list = false;
  uint16_t type = 0;           // of the parameter that it sets, alone or with other rows; 0: none
  uint32_t mode = 0;           // in which it sets it (STP_MCEC_STP_MODE_*); 0: in every mode
  const Form *form = nullptr;  // only if one field sets one value
};

std::span<const Field> fields();

// Returns nullptr if no field of that name is read in the table.
const Field *find_field(std::string_view table, std::string_view name);

// Returns the field that sets a parameter in a mode, or nullptr.
const Field *field_of_parameter(uint16_t type, uint32_t mode);

// Returns every field that matches a word: the name of a field, of a table, or both
// ("STP_PORT|root_guard"), in any spelling that key_of() accepts.
std::vector<const Field *> find_fields(std::string_view word);

// Returns the tables whose rows are read; all others are ignored.
const std::set<std::string> &tables_read();

// Returns true if a field is read; others are ignored. All fields of STP_PORT are read, for notes.
bool is_read(std::string_view table, std::string_view field);

}  // namespace lab
