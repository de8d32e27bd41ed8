// Parameters, commands and results with their names, from the tables of the library's headers.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

// The switches of a pair. Arrays of two are indexed in this order.
inline constexpr std::array<const char *, 2> switch_names = {"left", "right"};

struct Parameter {
  uint16_t type;
  std::string key;         // "stp-mode"
  std::string enumerator;  // "STP_MCEC_TYPE1_STP_MODE"
  bool is_global;
  uint16_t length;
  uint32_t mismatch;      // the result code of a difference
  uint32_t kind;          // STP_MCEC_KIND_*
  uint32_t default_word;  // the default of a value of one word; a longer one is 0 by default
  uint32_t compared;      // STP_MCEC_COMPARED_IN_*
  bool is_compared_on_pod;
};

struct CommandInfo {
  uint32_t id;
  std::string key;
  std::string enumerator;
  std::string extractor;
  bool is_gated;
  uint32_t sets;  // STP_MCEC_SETS of the parameters
};

struct ResultInfo {
  std::string name;
  uint32_t code;
};

const std::vector<Parameter> &parameters();
const Parameter *find_parameter(std::string_view key);
const Parameter *find_parameter(uint32_t type);

// Returns whether the library compares a parameter. `mode`: the cached STP_MCEC_STP_MODE_*, nullopt
// if none is cached; `on_pod`: on a pod port; `has_twins`: twin VLANs are known.
bool is_compared(const Parameter &parameter, std::optional<uint32_t> mode, bool on_pod,
                 bool has_twins);

bool sets(const CommandInfo &command, const Parameter &parameter);

const std::vector<CommandInfo> &commands();
const CommandInfo *find_command(std::string_view key);
const CommandInfo *find_command(uint32_t id);

const std::vector<ResultInfo> &results();

// Returns "stp-mode", or the number of an unknown type.
std::string parameter_key(uint32_t type);

// Returns "agree" for 0, the name of a code ("STP_MCEC_ERR_TYPE1_STP_MODE"), or its number.
std::string result_name(uint32_t code);

// Parses the name of a code, in any case, with or without "STP_MCEC_ERR_", or a number.
std::optional<uint32_t> find_result(std::string_view name);

// Returns the parameter whose mismatch has this code, or nullptr.
const Parameter *find_mismatched_parameter(uint32_t code);

std::vector<std::string> parameter_keys();
std::vector<std::string> command_keys();
std::vector<std::string> result_keys();

}  // namespace lab
