// The names by which the lab speaks of parameters, commands and results, all made from the
// library's headers, and the texts of values, all asked from its functions.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "arrays.h"
#include "draimiofaf/types.h"

namespace lab {

using Json = nlohmann::ordered_json;

struct ParameterName {
  uint16_t type;
  std::string key;         // "stp-mode"
  std::string enumerator;  // "STP_MCEC_TYPE1_STP_MODE"
  bool is_global;
  uint16_t length;
  uint32_t mismatch;
};

struct CommandName {
  uint32_t id;
  std::string key;
  std::string enumerator;
  std::string extractor;
  bool is_gated;
};

const std::vector<ParameterName> &parameters();
const ParameterName *find_parameter(std::string_view key);
const ParameterName *find_parameter(uint32_t type);

const std::vector<CommandName> &commands();
const CommandName *find_command(std::string_view key);
const CommandName *find_command(uint32_t id);

// "stp-mode", or the number of a type that is no parameter.
std::string parameter_key(uint32_t type);

// "agree" for 0, "STP_MCEC_ERR_TYPE1_STP_MODE" and the like, or the number of another code.
std::string result_name(uint32_t code);

// The code of a name, with or without "STP_MCEC_ERR_", in any case, or of a number.
std::optional<uint32_t> find_result(std::string_view name);
const std::vector<std::pair<std::string, uint32_t>> &results();

// --- values, in network byte order as the library holds them ---

Bytes word(uint32_t value);
uint32_t word_of(const Bytes &value);

// The words by which a scenario may name the values of a parameter, from the library's own display
// texts: "rapid-pvst", "edge-trunk-port". Empty for parameters that have no such texts.
std::map<std::string, uint32_t> value_words(uint16_t type);

// What the library displays for a value, except that a VLAN list is whole and a VLAN map is told.
std::string display(uint16_t type, const Bytes &value);

// Do two display texts say the same? Names are taken to the letter, other texts by their words.
bool same_text(std::string_view parameter, std::string_view a, std::string_view b);

// How a scenario writes a value of the parameter.
std::string value_help(uint16_t type);

// The flags of the global port type by their words.
const std::map<std::string, uint32_t> &flag_words();

// "STP_MODE", "Edge Trunk Port" and "edge-trunk-port" in one spelling, the last.
std::string key_of(std::string_view name);

// The parameter's title in the library's report.
std::string title(uint16_t type);

// A value that is the parameter's default, by the library's own test.
Bytes default_value(const ParameterName &parameter);

// --- VLANs ---

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

// "1-10,20" or "0x1000-0x1003,0x2000" as ranges; nothing for a text that is no list of numbers up to
// `most`, each range the right way round.
std::optional<Ranges> parse_ranges(std::string_view text, uint32_t most);

// The same of VLANs, 0 to 4095; "none" and "" are the empty list.
std::optional<Ranges> parse_vlans(std::string_view text);

// A bitmap record with the size word in network byte order.
Bytes vlan_record(const Ranges &ranges);
std::string vlan_text(const Bytes &record);

// --- numbers and bytes as text ---

std::optional<uint32_t> parse_number(std::string_view text);
std::string hex(const Bytes &bytes);
Bytes unhex(std::string_view text);
std::string port_text(uint32_t if_index);

// Text that any terminal and any JSON reader takes: what is no printable UTF-8 is escaped.
std::string printable(std::string_view text);
std::string printable_lines(std::string_view text);  // line feeds stay

// A line of an event history, without its line feed.
std::string log_line(std::string_view text);

// "a, b or c".
template <class List>
std::string one_of(const List &names) {
  std::string text;
  std::size_t left = std::size(names);
  for (const auto &name : names) {
    --left;
    text += name;
    if (left > 0) text += left == 1 ? " or " : ", ";
  }
  return text;
}

}  // namespace lab
