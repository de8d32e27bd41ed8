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

constexpr Explanation foreign_code = {
    0, "No code of this library: it passes on those of the platform's TLV library.",
    "whatever reads or writes an array", "The line before it in the event history, and the array."};

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
  Items items = {
      {"parameter",
       fmt::format("{} (type {}, {})", parameter.key, parameter.type, parameter.enumerator)},
      {"called", fmt::format("\"{}\", in reports \"{}\"", display_name, title(parameter))},
      {"scope", scope_of(parameter)},
      {"length", std::to_string(parameter.length) + " bytes"},
      {"default", describe_default(parameter)},
      {"values", value_help(parameter)}};
  if (parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    items.emplace_back("digest",
                       "Bridges do not show the map itself, but its IEEE 802.1Q "
                       "configuration digest; that of the default is " +
                           region_digest(default_value(parameter)) + ".");
  }
  const Advice &advice = advice_on(parameter.type);
  items.emplace_back("mismatch", describe_result(parameter.mismatch));
  items.emplace_back("goes wrong", advice.harm);
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
          {"asked", command.is_gated ? "only while a multi-chassis trunk exists"
                                     : "always; port by port, whether it is a member"},
          {"sets", join(keys_set_by(command))}};
}

Items explain_code(uint32_t code) {
  Items items = {{"result", describe_result(code, "success")}};
  if (const Parameter *parameter = parameter_of_mismatch(code)) {
    items.emplace_back("means",
                       fmt::format("The parameter \"{}\" is the first that differs between the "
                                   "peers.",
                                   stp_mcec_type1_cfg_type_to_str(parameter->type)));
    items.emplace_back("from", "the checks");
    items.emplace_back("look at",
                       "Its value on both switches: a check in the lab shows them side by side.");
    return items;
  }
  const auto *known = std::ranges::find(explanations, code, &Explanation::code);
  const Explanation &explanation = known != std::end(explanations) ? *known : foreign_code;
  items.emplace_back("means", explanation.meaning);
  items.emplace_back("from", explanation.who);
  items.emplace_back("look at", explanation.look);
  return items;
}

// An identifier that the library routes although it is no command.
constexpr uint32_t routed_only = 62;

Items explain_routed() {
  return {{"command", fmt::format("{}: no command of this library, but routed", routed_only)},
          {"extractor", "stp_mcec_extract_gbl_params, which refuses it as an invalid identifier"},
          {"asked", "only while a multi-chassis trunk exists; without one it is accepted unread"}};
}

// "40DD003B" as well as "0x40DD003B".
std::optional<uint32_t> bare_code(const std::string &what) {
  constexpr std::size_t digits = 8;
  return what.size() == digits ? parse_number("0x" + what) : std::nullopt;
}

// The fields of no parameter that an operator means by a word, and the parameters of the others.
void explain_fields(const std::vector<const Field *> &found, std::vector<Items> &parts) {
  if (found.empty()) return;
  Items &items = parts.emplace_back();
  std::set<uint16_t> types;
  for (const Field *field : found) {
    if (field->type != 0) {
      types.insert(field->type);
    } else {
      items.emplace_back("field", describe_field_place(*field));
      items.emplace_back("means", field_meaning(*field));
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
  const auto code = bare_code(what) ? bare_code(what) : find_result(what);
  if (code && (parts.empty() || *code <= 1 || *code > UINT16_MAX)) {
    parts.push_back(explain_code(*code));
    const Parameter *mismatching = parameter_of_mismatch(*code);
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
    rows.push_back({std::to_string(parameter.type), parameter.key, scope_of(parameter),
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
            {"scope", scope_of(parameter)},
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
