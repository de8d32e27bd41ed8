// The tables and fields of a configuration database that say something of spanning tree, and the
// parameters that they give: one table, for reading, for patches and for explanations.
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

// How a field is taken.
enum class FieldUse : uint8_t {
  row,    // none: that the row exists says something
  read,   // a wrong value is an error
  noted,  // for notes only, which take any value
};

// How a value is written that one field gives: a parameter's, in network byte order.
struct Form {
  const char *expected;  // in the error of a text that cannot be parsed
  std::optional<Bytes> (*parse)(std::string_view text);
  std::string (*print)(const Bytes &value);
};

struct Field {
  const char *table;
  const char *key;   // as a person writes it: "GLOBAL", "VlanN"
  const char *name;  // empty: the row itself
  FieldUse use = FieldUse::read;
  bool takes_list = false;
  uint16_t type = 0;           // of the parameter that it gives, alone or with other rows; 0: none
  uint32_t mode = 0;           // in which it gives it (STP_MCEC_STP_MODE_*); 0: in every mode
  const Form *form = nullptr;  // where it alone gives a value
};

std::span<const Field> fields();

// nullptr: no field of that name is read in the table.
const Field *find_field(std::string_view table, std::string_view name);

// The field that gives a parameter in a mode; nullptr: none does.
const Field *field_of_parameter(uint16_t type, uint32_t mode);

// Every field that a person can mean by a word: the name of a field, of a table, or both
// ("STP_PORT|root_guard"), in any spelling of key_of().
std::vector<const Field *> find_fields(std::string_view word);

// The tables whose rows are read; all others are passed over.
const std::set<std::string> &tables_read();

// Is a field of a table read? Others are passed over. Of STP_PORT every field is, for notes.
bool is_read(std::string_view table, std::string_view field);

}  // namespace lab
