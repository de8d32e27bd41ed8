#include "switch/names.h"

#include <fmt/format.h>

#include <algorithm>

#include "draimiofaf/types.h"
#include "text/text.h"

namespace lab {
namespace {

constexpr std::string_view prefix = "STP_MCEC_";

template <class Named>
const Named *find_key(const std::vector<Named> &all, std::string_view name) {
  const std::string key = key_of(name);
  return find_in(
      all, [&](const Named &named) { return named.key == key || key_of(named.enumerator) == key; });
}

}  // namespace

const std::vector<Parameter> &parameters() {
  enum { INTERFACE, GLOBAL };
  static const std::vector<Parameter> all = {
#define LAB_ROW(name, number, scope, bytes, code, kind_of, word, modes, pod) \
  {.type = number,                                                           \
   .key = key_of(#name),                                                     \
   .enumerator = "STP_MCEC_TYPE1_" #name,                                    \
   .is_global = scope == GLOBAL,                                             \
   .length = bytes,                                                          \
   .mismatch = code,                                                         \
   .kind = STP_MCEC_KIND_##kind_of,                                          \
   .default_word = word,                                                     \
   .compared = STP_MCEC_COMPARED_##modes,                                    \
   .is_compared_on_pod = STP_MCEC_COMPARED_##pod != 0},
      STP_MCEC_TYPE1_PARAMETERS(LAB_ROW)
#undef LAB_ROW
  };
  return all;
}

const std::vector<CommandInfo> &commands() {
  enum { UNGATED, GATED };
  static const std::vector<CommandInfo> all = {
#define LAB_ROW(name, number, function, gate, parameters) \
  {.id = number,                                          \
   .key = key_of(#name),                                  \
   .enumerator = "STP_MCEC_CMD_" #name,                   \
   .extractor = #function,                                \
   .is_gated = gate == GATED,                             \
   .sets = parameters},
      STP_MCEC_COMMANDS(LAB_ROW)
#undef LAB_ROW
  };
  return all;
}

const std::vector<ResultInfo> &results() {
  static const std::vector<ResultInfo> all = [] {
    std::vector<ResultInfo> names = {
        {"STP_MCEC_RESULT_NO_BLOCK", STP_MCEC_RESULT_NO_BLOCK},
        {"STP_MCEC_RESULT_PVRST_REFUSED", STP_MCEC_RESULT_PVRST_REFUSED},
#define LAB_ROW(name, code) {"STP_MCEC_" #name, code},
        STP_MCEC_RESULT_CODES(LAB_ROW)
#undef LAB_ROW
    };
    for (const Parameter &parameter : parameters()) {
      names.push_back(
          {"STP_MCEC_ERR_" + parameter.enumerator.substr(prefix.size()), parameter.mismatch});
    }
    return names;
  }();
  return all;
}

const Parameter *find_parameter(std::string_view key) {
  return find_key(parameters(), key);
}

const Parameter *find_parameter(uint32_t type) {
  return find_in(parameters(), [=](const Parameter &p) { return p.type == type; });
}

const CommandInfo *find_command(std::string_view key) {
  return find_key(commands(), key);
}

const CommandInfo *find_command(uint32_t id) {
  return find_in(commands(), [=](const CommandInfo &c) { return c.id == id; });
}

bool is_compared(const Parameter &parameter, std::optional<uint32_t> mode, bool on_pod,
                 bool has_twins) {
  if (!mode || (on_pod && !parameter.is_compared_on_pod)) return false;
  switch (parameter.compared) {
    case STP_MCEC_COMPARED_IN_MST:
      return *mode == STP_MCEC_STP_MODE_MST;
    case STP_MCEC_COMPARED_IN_RAPID_PVST:
      return *mode == STP_MCEC_STP_MODE_RAPID_PVST && has_twins;
    default:
      return true;
  }
}

bool sets(const CommandInfo &command, const Parameter &parameter) {
  return (command.sets >> parameter.type & 1) != 0;
}

std::string parameter_key(uint32_t type) {
  const Parameter *parameter = find_parameter(type);
  return parameter != nullptr ? parameter->key : std::to_string(type);
}

std::string result_name(uint32_t code) {
  if (code == 0) return "agree";
  const auto *known = find_in(results(), [=](const ResultInfo &r) { return r.code == code; });
  return known != nullptr ? known->name : fmt::format("0x{:08X}", code);
}

std::optional<uint32_t> find_result(std::string_view name) {
  const std::string key = key_of(name);
  if (key == "agree" || key == "ok") return 0;
  for (const std::string before : {"", "stp-mcec-", "stp-mcec-err-", "stp-mcec-result-"}) {
    const auto *known =
        find_in(results(), [&](const ResultInfo &r) { return key_of(r.name) == before + key; });
    if (known != nullptr) return known->code;
  }
  return parse_number(name);
}

const Parameter *find_mismatched_parameter(uint32_t code) {
  return find_in(parameters(), [=](const Parameter &p) { return p.mismatch == code; });
}

std::vector<std::string> parameter_keys() {
  return describe_each(parameters(), [](const Parameter &p) { return p.key; });
}

std::vector<std::string> command_keys() {
  return describe_each(commands(), [](const CommandInfo &c) { return c.key; });
}

std::vector<std::string> result_keys() {
  std::vector<std::string> keys = {"agree", "ok"};
  for (const ResultInfo &result : results()) {
    std::string_view name = std::string_view(result.name).substr(prefix.size());
    for (const std::string_view before : {"ERR_", "RESULT_"}) {
      if (name.starts_with(before)) name.remove_prefix(before.size());
    }
    keys.emplace_back(name);
  }
  return keys;
}

}  // namespace lab
