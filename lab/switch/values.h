// The values of parameters, by kind: reading and writing YAML, display texts (from the library),
// comparison and help.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "switch/names.h"
#include "switch/settings.h"
#include "text/yaml.h"

namespace lab {

// --- values are in network byte order, as in the library ---

Bytes word_value(uint32_t value);
uint32_t word_of(const Bytes &value);

// Returns the value of a parameter that is not configured.
Bytes default_value(const Parameter &parameter);

// Returns the parameter's title in the library's report.
std::string title(const Parameter &parameter);

// Reads the value of a parameter. Any parameter accepts {bytes: ...}.
Bytes read_value(Reader &reader, const Parameter &parameter, const YAML::Node &node);

// Returns the library's display text of a value. A VLAN list is complete, and a VLAN map is
// described, for which the library has no text.
std::string display(uint32_t type, const Bytes &value);

// Formats a value in YAML, so that read_value returns the same bytes: rapid-pvst, "10-20",
// {1: "10-20"}.
std::string written(const Entry &entry);

// Describes the values that read_value accepts for a parameter.
std::string value_help(const Parameter &parameter);

// Compares two display texts: region names byte by byte, other texts by their keys (key_of).
bool is_same_text(std::string_view parameter, std::string_view a, std::string_view b);

// The VLANs that only one of two values has: "700 (instance 1)". Both texts are empty for values
// without VLANs, and for values that differ in no VLAN.
struct Difference {
  std::string left;
  std::string right;
};
Difference difference(uint32_t type, const Bytes &left, const Bytes &right);

// Returns the words for the values of a parameter, from the library's display texts: "rapid-pvst",
// "edge-trunk-port". Empty for a parameter whose values have no fixed texts.
const Words &value_words(const Parameter &parameter);

}  // namespace lab
