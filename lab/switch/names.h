// Parameters, commands and results with their names: the tables of the library's headers.
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

struct Parameter {
  uint16_t type;
  std::string key;         // "stp-mode"
  std::string enumerator;  // "STP_MCEC_TYPE1_STP_MODE"
  bool is_global;
  uint16_t length;
  uint32_t mismatch;
  uint32_t kind;          // STP_MCEC_KIND_*
  uint32_t default_word;  // of a value of one word; longer ones are zero by default
  uint32_t compared;      // STP_MCEC_COMPARED_IN_*
  bool is_compared_on_pod;
};

struct CommandInfo {
  uint32_t id;
  std::string key;
  std::string enumerator;
  std::string extractor;
  bool is_gated;
  uint32_t sets;  // STP_MCEC_SETS of the parameters that it sets
};

struct ResultInfo {
  std::string name;
  uint32_t code;
};

const std::vector<Parameter> &parameters();
const Parameter *find_parameter(std::string_view key);
const Parameter *find_parameter(uint32_t type);

// Does the library compare a parameter? `mode`: the cached one (STP_MCEC_STP_MODE_*), nothing
// without one; `on_pod`: on a pod port; `has_twins`: twin VLANs are given.
bool is_compared(const Parameter &parameter, std::optional<uint32_t> mode, bool on_pod,
                 bool has_twins);

bool sets(const CommandInfo &command, const Parameter &parameter);

const std::vector<CommandInfo> &commands();
const CommandInfo *find_command(std::string_view key);
const CommandInfo *find_command(uint32_t id);

const std::vector<ResultInfo> &results();

// "stp-mode", or the number of a type that is no parameter.
std::string parameter_key(uint32_t type);

// "agree" for 0, "STP_MCEC_ERR_TYPE1_STP_MODE" and the like, or the number of another code.
std::string result_name(uint32_t code);

// The code of a name, with or without "STP_MCEC_ERR_", in any case, or of a number.
std::optional<uint32_t> find_result(std::string_view name);

// The parameter whose mismatch a code reports, nullptr when it reports something else.
const Parameter *parameter_of_mismatch(uint32_t code);

std::vector<std::string> parameter_keys();
std::vector<std::string> command_keys();
std::vector<std::string> result_keys();

}  // namespace lab
