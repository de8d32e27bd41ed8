// The values of parameters: the kinds that there are, each read from YAML, written for a person,
// compared as text, distinguished and offered as help in one place. Texts come from the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "switch/names.h"
#include "switch/settings.h"
#include "text/yaml.h"

namespace lab {

// --- values are in network byte order, as the library holds them ---

Bytes word(uint32_t value);
uint32_t word_of(const Bytes &value);

// The value of a parameter that is not configured.
Bytes default_value(const Parameter &parameter);

// The parameter's title in the library's report.
std::string title(const Parameter &parameter);

// What a scenario says for a parameter; {bytes: ...} gives any parameter any bytes.
Bytes read_value(Reader &reader, const Parameter &parameter, const YAML::Node &node);

// What the library displays for a value, except that a VLAN list is whole and a VLAN map is
// described.
std::string display(uint32_t type, const Bytes &value);

// How a scenario or a state file writes a value, in YAML, so that reading it gives the same bytes:
// rapid-pvst, "10-20", {1: "10-20"}.
std::string written(const Entry &entry);

// How a scenario writes values of the parameter, for a person.
std::string value_help(const Parameter &parameter);

// Do two display texts say the same? Names are taken to the letter, other texts by their words.
bool same_text(std::string_view parameter, std::string_view a, std::string_view b);

// What only the one and what only the other has of two long values: "700 (instance 1)". Both are
// empty for values that are short, or that differ in no VLAN.
struct Difference {
  std::string left;
  std::string right;
};
Difference difference(uint32_t type, const Bytes &left, const Bytes &right);

// The words by which a scenario names the values of a parameter, from the library's own display
// texts: "rapid-pvst", "edge-trunk-port". Empty for parameters that have no such texts.
const Words &value_words(const Parameter &parameter);

}  // namespace lab
