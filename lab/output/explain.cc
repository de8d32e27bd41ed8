#include "output/explain.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "draimiofaf/foundation.h"
#include "output/advice.h"
#include "output/check_json.h"
#include "output/error_json.h"
#include "sonic/fields.h"
#include "switch/values.h"

namespace lab {
namespace {

// --- the tables ---

const char *scope_of(const Parameter &parameter) {
  return parameter.is_global ? "switch" : "interface";
}

std::string describe_default(const Parameter &parameter) {
  return display(parameter.type, default_value(parameter));
}

std::vector<std::string> keys_set_by(const CommandInfo &command) {
  std::vector<std::string> keys;
  for (const Parameter &parameter : parameters()) {
    if (sets(command, parameter)) keys.push_back(parameter.key);
  }
  return keys;
}

Json commands_to_json() {
  Json list = Json::array();
  for (const CommandInfo &command : commands()) {
    list.push_back({{"command", command.key},
                    {"id", command.id},
                    {"name", command.enumerator},
                    {"extractor", command.extractor},
                    {"gated", command.is_gated},
                    {"sets", keys_set_by(command)}});
  }
  return list;
}

Json parameters_to_json() {
  Json list = Json::array();
  for (const Parameter &parameter : parameters()) {
    list.push_back({{"parameter", parameter.key},
                    {"type", parameter.type},
                    {"name", parameter.enumerator},
                    {"display", stp_mcec_type1_cfg_type_to_str(parameter.type)},
                    {"scope", scope_of(parameter)},
                    {"length", parameter.length},
                    {"default", describe_default(parameter)},
                    {"mismatch", code_to_json(parameter.mismatch, "")}});
  }
  return list;
}

// --- results in words ---

struct Explanation {
  uint32_t code;
  const char *meaning;
  const char *who;
  const char *look;
};

constexpr Explanation explanations[] = {
    {0, "Success. Of a check: what was compared agrees.", "every operation",
     "Nothing. Parameters that this mode does not compare may still differ: see the table of a "
     "check."},
    {STP_MCEC_RESULT_NO_BLOCK, "A block that is handed to the caller could not be allocated.",
     "the export, the report and the extractors",
     "The memory of the process. A command that failed so was refused; its value may be cached."},
    {STP_MCEC_RESULT_PVRST_REFUSED,
     "The mode command refused Rapid-PVST: too many user VLANs are configured.", "the mode command",
     "How many user VLANs the switch has; 507 are accepted, or use MST."},
    {STP_MCEC_ERR_FAILURE,
     "The check could not be carried out: no spanning-tree mode is cached, the cached mode is "
     "neither MST nor Rapid-PVST, or the peer did not send a parameter that is compared.",
     "the checks; also the mismatch code of a type that is no parameter",
     "Whether this switch has a mode cached, and which parameter is missing at the peer."},
    {STP_MCEC_ERR_NO_MEMORY, "An entry of the cache could not be allocated.",
     "cache update, rebuild and the extractors", "The memory of the process."},
    {STP_MCEC_ERR_INVALID_ARG,
     "A required argument is missing or out of range, or a message or command is unknown.",
     "checks, report, rebuild and the extractors",
     "The request: its identifier, its attributes and the lengths that they claim."},
    {STP_MCEC_ERR_TYPE1_PARAM_NULL, "One of the two arrays of a check is missing.", "the checks",
     "Whether the peer has sent its parameters."},
    {STP_MCEC_ERR_NO_MCEC_INFO, "The interface has no multi-chassis port channel.",
     "the membership query, and an interface command whose ports all left their channels meanwhile",
     "The membership of the ports that the command names."},
};

void print_item(const char *heading, const std::string &text, const Layout &layout) {
  put_wrapped(text, layout, 12, heading);
}

void print_code(uint32_t code, const Layout &layout) {
  print_item("result",
             fmt::format("{} (0x{:08X})", code == 0 ? "success" : result_name(code), code), layout);
}

// "STP_PORT|PortChannelN portfast, in Rapid-PVST".
std::string describe_field_place(const Field &field) {
  const char *mode = field.mode == STP_MCEC_STP_MODE_MST          ? ", in MST"
                     : field.mode == STP_MCEC_STP_MODE_RAPID_PVST ? ", in Rapid-PVST"
                                                                  : "";
  return std::string(field.table) + '|' + field.key + (field.name[0] != '\0' ? " " : "") +
         field.name + mode;
}

void explain_parameter(const Parameter &parameter, const Layout &layout) {
  print_item("parameter",
             fmt::format("{} (type {}, {})", parameter.key, parameter.type, parameter.enumerator),
             layout);
  print_item("called",
             fmt::format("\"{}\", in reports \"{}\"",
                         stp_mcec_type1_cfg_type_to_str(parameter.type), title(parameter)),
             layout);
  print_item("scope", scope_of(parameter), layout);
  print_item("length", std::to_string(parameter.length) + " bytes", layout);
  print_item("default", describe_default(parameter), layout);
  print_item("values", value_help(parameter), layout);
  if (parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    print_item(
        "digest",
        fmt::format("Bridges do not show the map itself, but its IEEE 802.1Q configuration digest; "
                    "that of the default is {}.",
                    region_digest(default_value(parameter))),
        layout);
  }
  print_item("mismatch",
             fmt::format("{} (0x{:08X})", result_name(parameter.mismatch), parameter.mismatch),
             layout);
  print_item("goes wrong", advice_on(parameter.type).harm, layout);
  print_item("fix", advice_on(parameter.type).fix, layout);
  for (const Field &field : fields()) {
    if (field.type == parameter.type) print_item("field", describe_field_place(field), layout);
  }
  for (const CommandInfo &command : commands()) {
    if (sets(command, parameter)) print_item("set by", command.key, layout);
  }
}

void explain_command(const CommandInfo &command, const Layout &layout) {
  print_item("command",
             fmt::format("{} (identifier {}, {})", command.key, command.id, command.enumerator),
             layout);
  print_item("extractor", command.extractor, layout);
  print_item("asked",
             command.is_gated ? "only while a multi-chassis trunk exists"
                              : "always; port by port, whether it is a member",
             layout);
  print_item("sets", join(keys_set_by(command)), layout);
}

void explain_code(uint32_t code, const Layout &layout) {
  print_code(code, layout);
  for (const Parameter &parameter : parameters()) {
    if (parameter.mismatch != code) continue;
    print_item("means",
               fmt::format("The parameter \"{}\" is the first that differs between the peers.",
                           stp_mcec_type1_cfg_type_to_str(parameter.type)),
               layout);
    print_item("from", "the checks", layout);
    print_item("look at", "Its value on both switches: a check in the lab shows them side by side.",
               layout);
    put_line("");
    explain_parameter(parameter, layout);
    return;
  }
  for (const Explanation &explanation : explanations) {
    if (explanation.code != code) continue;
    print_item("means", explanation.meaning, layout);
    print_item("from", explanation.who, layout);
    print_item("look at", explanation.look, layout);
    return;
  }
  print_item("means", "No code of this library: it passes on those of the platform's TLV library.",
             layout);
  print_item("from", "whatever reads or writes an array", layout);
  print_item("look at", "The line before it in the event history, and the array.", layout);
}

// An identifier that the library routes although it is no command.
constexpr uint32_t routed_only = 62;

void explain_routed(const Layout &layout) {
  print_item("command", fmt::format("{}: no command of this library, but routed", routed_only),
             layout);
  print_item("extractor", "stp_mcec_extract_gbl_params, which refuses it as an invalid identifier",
             layout);
  print_item("asked", "only while a multi-chassis trunk exists; without one it is accepted unread",
             layout);
}

// "40DD003B" as well as "0x40DD003B".
std::optional<uint32_t> bare_code(const std::string &what) {
  constexpr std::size_t digits = 8;
  return what.size() == digits ? parse_number("0x" + what) : std::nullopt;
}

// The parameters of the fields that an operator means by a word, and the fields of none.
void explain_fields(const std::vector<const Field *> &found, const Layout &layout) {
  std::set<uint16_t> meant;
  for (const Field *field : found) {
    if (field->type != 0) meant.insert(field->type);
  }
  for (const Field *field : found) {
    if (field->type != 0) continue;
    print_item("field", describe_field_place(*field), layout);
    print_item("means", field_meaning(*field), layout);
  }
  for (const uint16_t type : meant) {
    put_line("");
    explain_parameter(*find_parameter(uint32_t{type}), layout);
  }
}

}  // namespace

bool explain(const std::string &what, const Layout &layout) {
  const auto number = parse_number(what);
  bool known = false;
  const auto heading = [&known] {
    if (known) put_line("");
    known = true;
  };
  const Parameter *parameter =
      number ? find_parameter(*number) : find_parameter(std::string_view(what));
  if (parameter != nullptr) {
    heading();
    explain_parameter(*parameter, layout);
  }
  const CommandInfo *command =
      number ? find_command(*number) : find_command(std::string_view(what));
  if (command != nullptr) {
    heading();
    explain_command(*command, layout);
  }
  if (number == routed_only) {
    heading();
    explain_routed(layout);
  }
  if (const auto found = find_fields(what); !known && !found.empty()) {
    heading();
    explain_fields(found, layout);
  }
  const auto code = bare_code(what) ? bare_code(what) : find_result(what);
  if (code && (!known || *code <= 1 || *code > UINT16_MAX)) {
    heading();
    explain_code(*code, layout);
  }
  return known;
}

void list(const std::string &what, const Layout &layout) {
  if (what != "commands") {
    std::vector<std::vector<Cell>> rows;
    for (const Parameter &parameter : parameters()) {
      rows.push_back({{std::to_string(parameter.type)},
                      {parameter.key},
                      {scope_of(parameter)},
                      {std::to_string(parameter.length)},
                      {describe_default(parameter)},
                      {fmt::format("0x{:08X}", parameter.mismatch)}});
    }
    put_table({"type", "parameter", "scope", "length", "default", "mismatch"}, rows, layout);
  }
  if (what != "parameters") {
    std::vector<std::vector<Cell>> rows;
    for (const CommandInfo &command : commands()) {
      rows.push_back({{std::to_string(command.id)}, {command.key}, {join(keys_set_by(command))}});
    }
    put_table({"id", "command", "sets"}, rows, layout);
  }
}

std::string format_list() {
  Json codes = Json::array();
  for (const auto &[name, code] : results()) codes.push_back({{"name", name}, {"code", code}});
  return format_json(
      {{"parameters", parameters_to_json()}, {"commands", commands_to_json()}, {"results", codes}},
      JsonForm::indented);
}

}  // namespace lab
