// The names by which the lab speaks of parameters, commands and results, all made from the
// library's headers.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab {

// The two switches on the desk, in the order in which everything of both is kept.
inline constexpr std::array<const char *, 2> switch_names = {"left", "right"};

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

struct ResultName {
  std::string name;
  uint32_t code;
};

const std::vector<ParameterName> &parameters();
const ParameterName *find_parameter(std::string_view key);
const ParameterName *find_parameter(uint32_t type);

const std::vector<CommandName> &commands();
const CommandName *find_command(std::string_view key);
const CommandName *find_command(uint32_t id);

const std::vector<ResultName> &results();

// "stp-mode", or the number of a type that is no parameter.
std::string parameter_key(uint32_t type);

// "agree" for 0, "STP_MCEC_ERR_TYPE1_STP_MODE" and the like, or the number of another code.
std::string result_name(uint32_t code);

// The code of a name, with or without "STP_MCEC_ERR_", in any case, or of a number.
std::optional<uint32_t> find_result(std::string_view name);

// The parameter of whose mismatch a code tells, nullptr when it tells something else.
const ParameterName *parameter_of_mismatch(uint32_t code);

std::vector<std::string> parameter_keys();
std::vector<std::string> command_keys();
std::vector<std::string> result_keys();

}  // namespace lab
