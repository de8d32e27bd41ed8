#include <fmt/core.h>

#include <set>

#include "draimiofaf/foundation.h"
#include "output/json.h"
#include "output/print.h"
#include "switch/values.h"

namespace lab {
namespace {

// Headings and texts.
using Items = std::vector<std::pair<const char *, std::string>>;

const char *scope_name(const Parameter &parameter) {
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

struct Explanation {
  uint32_t code;
  const char *meaning;
  const char *origin;
  const char *check;
};

constexpr Explanation explanations[] = {
    {0, "Success. For a check: all compared parameters agree.", "all operations",
     "Nothing. Parameters that are not compared in this mode may differ; the table of a check "
     "shows them."},
    {STP_MCEC_RESULT_NO_BLOCK, "A block for the caller could not be allocated.",
     "the export, the report and the extractors",
     "The memory of the process. The command was refused, but its value may be cached."},
    {STP_MCEC_RESULT_PVRST_REFUSED,
     "The mode command refused Rapid-PVST: too many user VLANs are configured.", "the mode command",
     "How many user VLANs the switch has; 507 are accepted, or use MST."},
    {STP_MCEC_ERR_FAILURE,
     "The check failed: no spanning-tree mode is cached, the cached mode is neither MST nor "
     "Rapid-PVST, or the peer did not send a parameter that is compared.",
     "the checks; also the mismatch code of an unknown parameter type",
     "Whether this switch has a mode in its cache, and which parameter the peer does not send."},
    {STP_MCEC_ERR_NO_MEMORY, "A cache entry could not be allocated.",
     "cache update, rebuild and the extractors", "The memory of the process."},
    {STP_MCEC_ERR_INVALID_ARG,
     "A required argument is missing or out of range, or a message or command is unknown.",
     "checks, report, rebuild and the extractors",
     "The request: its identifier, its attributes and their lengths."},
    {STP_MCEC_ERR_TYPE1_PARAM_NULL, "One of the two arrays of a check is missing.", "the checks",
     "Whether the peer has sent its parameters."},
    {STP_MCEC_ERR_NO_MCEC_INFO, "The interface has no multi-chassis port channel.",
     "the membership query, and an interface command whose ports have all left their channels",
     "The membership of the ports of the command."},
};

constexpr Explanation foreign_code = {
    0, "Not a code of this library, which also returns the codes of the platform's TLV library.",
    "operations that read or write an array", "The last line of the event history, and the array."};

// "STP_PORT|PortChannelN portfast, in Rapid-PVST".
std::string describe_field_place(const Field &field) {
  const char *mode = field.mode == STP_MCEC_STP_MODE_MST          ? ", in MST"
                     : field.mode == STP_MCEC_STP_MODE_RAPID_PVST ? ", in Rapid-PVST"
                                                                  : "";
  return fmt::format("{}|{}{}{}{}", field.table, field.key, field.name[0] != '\0' ? " " : "",
                     field.name, mode);
}

Items explain_parameter(const Parameter &parameter) {
  const std::string display_name = stp_mcec_type1_cfg_type_to_str(parameter.type);
  Items items = {{"parameter", fmt::format("{} (type {}, {})", parameter.key, parameter.type,
                                           parameter.enumerator)},
                 {"name", fmt::format("\"{}\", in reports \"{}\"", display_name, title(parameter))},
                 {"scope", scope_name(parameter)},
                 {"length", std::to_string(parameter.length) + " bytes"},
                 {"default", describe_default(parameter)},
                 {"values", value_help(parameter)}};
  if (parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    items.emplace_back("digest",
                       "Switches display the IEEE 802.1Q configuration digest of the map; the "
                       "digest of the default is " +
                           region_digest(default_value(parameter)) + ".");
  }
  const Advice &advice = find_advice(parameter.type);
  items.emplace_back("mismatch", describe_result(parameter.mismatch));
  items.emplace_back("effect", advice.effect);
  items.emplace_back("fix", advice.fix);
  for (const Field &field : fields()) {
    if (field.type == parameter.type) items.emplace_back("field", describe_field_place(field));
  }
  for (const CommandInfo &command : commands()) {
    if (sets(command, parameter)) items.emplace_back("set by", command.key);
  }
  return items;
}

Items explain_command(const CommandInfo &command) {
  return {{"command",
           fmt::format("{} (identifier {}, {})", command.key, command.id, command.enumerator)},
          {"extractor", command.extractor},
          {"extracted", command.is_gated ? "only if a multi-chassis trunk exists"
                                         : "always, for the member ports of a channel"},
          {"sets", join(keys_set_by(command))}};
}

Items explain_code(uint32_t code) {
  Items items = {{"result", describe_result(code, "success")}};
  if (const Parameter *parameter = find_mismatched_parameter(code)) {
    items.emplace_back("meaning", fmt::format("\"{}\" is the first parameter that differs.",
                                              stp_mcec_type1_cfg_type_to_str(parameter->type)));
    items.emplace_back("returned by", "the checks");
    items.emplace_back("check",
                       "Its value on both switches: a check in the lab prints them side by side.");
    return items;
  }
  const auto *known = std::ranges::find(explanations, code, &Explanation::code);
  const Explanation &explanation = known != std::end(explanations) ? *known : foreign_code;
  items.emplace_back("meaning", explanation.meaning);
  items.emplace_back("returned by", explanation.origin);
  items.emplace_back("check", explanation.check);
  return items;
}

// The library routes this identifier although no command has it.
constexpr uint32_t routed_only = 62;

Items explain_routed() {
  return {{"command", fmt::format("{}: not a command of this library, but routed", routed_only)},
          {"extractor", "stp_mcec_extract_gbl_params, which refuses it as an invalid identifier"},
          {"extracted", "only if a multi-chassis trunk exists; else it is accepted unread"}};
}

// Explains the fields that belong to no parameter, and the parameters of the other fields.
void explain_fields(const std::vector<const Field *> &found, std::vector<Items> &parts) {
  if (found.empty()) return;
  Items &items = parts.emplace_back();
  std::set<uint16_t> types;
  for (const Field *field : found) {
    if (field->type != 0) {
      types.insert(field->type);
    } else {
      items.emplace_back("field", describe_field_place(*field));
      items.emplace_back("meaning", describe_field(*field));
    }
  }
  for (const uint16_t type : types) {
    parts.push_back(explain_parameter(*find_parameter(uint32_t{type})));
  }
}

}  // namespace

bool explain(const std::string &what, const Layout &layout) {
  const auto number = parse_number(what);
  const Parameter *parameter =
      number ? find_parameter(*number) : find_parameter(std::string_view(what));
  const CommandInfo *command =
      number ? find_command(*number) : find_command(std::string_view(what));
  std::vector<Items> parts;
  if (parameter != nullptr) parts.push_back(explain_parameter(*parameter));
  if (command != nullptr) parts.push_back(explain_command(*command));
  if (number == routed_only) parts.push_back(explain_routed());
  if (parts.empty()) explain_fields(find_fields(what), parts);
  // "40DD003B" is a code, too.
  constexpr std::size_t code_digits = 8;
  const auto bare_code = what.size() == code_digits ? parse_number("0x" + what) : std::nullopt;
  const auto code = bare_code ? bare_code : find_result(what);
  if (code && (parts.empty() || *code <= 1 || *code > UINT16_MAX)) {
    parts.push_back(explain_code(*code));
    const Parameter *mismatching = find_mismatched_parameter(*code);
    if (mismatching != nullptr) parts.push_back(explain_parameter(*mismatching));
  }
  for (const Items &items : parts) {
    if (&items != &parts.front()) put_line("");
    for (const auto &[heading, text] : items) put_wrapped(text, layout, 12, heading);
  }
  return !parts.empty();
}

void list(const std::string &what, const Layout &layout) {
  std::vector<std::vector<Cell>> rows;
  for (const Parameter &parameter : parameters()) {
    rows.push_back({std::to_string(parameter.type), parameter.key, scope_name(parameter),
                    std::to_string(parameter.length), describe_default(parameter),
                    fmt::format("0x{:08X}", parameter.mismatch)});
  }
  if (what != "commands") {
    put_table({"type", "parameter", "scope", "length", "default", "mismatch"}, rows, layout);
  }
  rows.clear();
  for (const CommandInfo &command : commands()) {
    rows.push_back({std::to_string(command.id), command.key, join(keys_set_by(command))});
  }
  if (what != "parameters") put_table({"id", "command", "sets"}, rows, layout);
}

std::string format_list() {
  const auto describe_parameter = [](const Parameter &parameter) -> Json {
    return {{"parameter", parameter.key},
            {"type", parameter.type},
            {"name", parameter.enumerator},
            {"display", stp_mcec_type1_cfg_type_to_str(parameter.type)},
            {"scope", scope_name(parameter)},
            {"length", parameter.length},
            {"default", describe_default(parameter)},
            {"mismatch", code_to_json(parameter.mismatch, "")}};
  };
  const auto describe_command = [](const CommandInfo &command) -> Json {
    return {{"command", command.key},     {"id", command.id},
            {"name", command.enumerator}, {"extractor", command.extractor},
            {"gated", command.is_gated},  {"sets", keys_set_by(command)}};
  };
  const auto describe_code = [](const ResultInfo &result) -> Json {
    return {{"name", result.name}, {"code", result.code}};
  };
  return format_json({{"parameters", list_json(parameters(), describe_parameter)},
                      {"commands", list_json(commands(), describe_command)},
                      {"results", list_json(results(), describe_code)}},
                     JsonForm::indented);
}

}  // namespace lab
