#include "explain.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "pair.h"
#include "scenario.h"

namespace lab {
namespace {

constexpr uint32_t sample_port = 0x1000;
constexpr uint32_t sample_channel = 10;

// --- what the library says of its parameters ---

std::string scope_text(const ParameterName &parameter) {
  return parameter.is_global ? "switch" : "interface";
}

std::string default_text(const ParameterName &parameter) {
  return display(parameter.type, default_value(parameter));
}

std::string joined(const Json &list) {
  std::string text;
  for (const Json &item : list) text += (text.empty() ? "" : ", ") + item.get<std::string>();
  return text;
}

// --- what the library makes of its commands ---

// A switch with a trunk, a member port and every parameter cached, on which commands are tried.
void prepare(Pair &pair) {
  Json world = {{"do", "world"}, {"trunk", true}, {"ports", Json::array()}};
  world["ports"].push_back({{"first", sample_port},
                            {"last", sample_port},
                            {"type", 0},
                            {"layer", 0},
                            {"member", sample_channel}});
  ask(pair, {true, false}, world);
  Json update = {{"do", "cache-update"}, {"global", true}, {"port", 0}, {"entries", Json::array()}};
  for (const ParameterName &parameter : parameters()) {
    if (!parameter.is_global) continue;
    update["entries"].push_back(
        {{"type", parameter.type}, {"value", hex(default_value(parameter))}});
  }
  ask(pair, {true, false}, update);
}

Bytes host_words(std::initializer_list<uint32_t> words) {
  Bytes bytes(words.size() * sizeof(uint32_t));
  std::copy(words.begin(), words.end(), reinterpret_cast<uint32_t *>(bytes.data()));
  return bytes;
}

// "Mode = Rapid-PVST": what one form of a command, with no more than it needs, sets.
Json effect_of(Pair &pair, const CommandName &command, bool positive) {
  const Json attributes = {
      {{"id", STP_MCEC_ATTR_VLAN_LIST}, {"value", hex(host_words({0, 1, 10, 20}))}},
      {{"id", STP_MCEC_ATTR_IFINDEX},
       {"value", hex(host_words({0, 1, 0, 0, sample_port, sample_port}))}}};
  const Json request = {
      {"do", "what-if"},
      {"scopes", Json::array()},
      {"command", {{"id", command.id}, {"positive", positive}, {"attributes", attributes}}}};
  const Json reply = ask(pair, {true, false}, request)[0];
  Json effects = Json::array();
  for (const Json &value : reply["values"]) {
    const uint16_t type = value["type"];
    // The reset hands out a shorter VLAN map than it caches; it is shown as the default it stands
    // for.
    const std::string text = display(type, unhex(value["value"].get<std::string>()));
    effects.push_back(parameter_key(type) + " = " + text);
  }
  return effects;
}

Json commands_json() {
  Pair pair;
  prepare(pair);
  Json list = Json::array();
  for (const CommandName &command : commands()) {
    list.push_back({{"command", command.key},
                    {"id", command.id},
                    {"name", command.enumerator},
                    {"extractor", command.extractor},
                    {"gated", command.is_gated},
                    {"set", effect_of(pair, command, true)},
                    {"no", effect_of(pair, command, false)}});
  }
  return list;
}

Json parameters_json() {
  Json list = Json::array();
  for (const ParameterName &parameter : parameters()) {
    list.push_back({{"parameter", parameter.key},
                    {"type", parameter.type},
                    {"name", parameter.enumerator},
                    {"display", stp_mcec_type1_cfg_type_to_str(parameter.type)},
                    {"scope", scope_text(parameter)},
                    {"length", parameter.length},
                    {"default", default_text(parameter)},
                    {"mismatch",
                     {{"name", result_name(parameter.mismatch)},
                      {"code", stp_mcec_get_type1_cfg_compat_chk_errcode(parameter.type)}}}});
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
     "neither "
     "MST nor Rapid-PVST, or the peer did not send a parameter that is compared.",
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

void say(const char *heading, const std::string &text, const ShowOptions &options) {
  const std::size_t indent = 12;
  std::string lines = wrapped(text, options.width - indent);
  for (std::size_t at = 0; (at = lines.find('\n', at)) != lines.npos;) {
    lines.insert(++at, indent, ' ');
  }
  fmt::print("{:<{}}{}\n", heading, indent, lines);
}

void say_code(uint32_t code, const ShowOptions &options) {
  say("result", fmt::format("{} (0x{:08X})", code == 0 ? "success" : result_name(code), code),
      options);
}

void explain_parameter(const ParameterName &parameter, const ShowOptions &options) {
  say("parameter",
      fmt::format("{} (type {}, {})", parameter.key, parameter.type, parameter.enumerator),
      options);
  say("called",
      fmt::format("\"{}\", in reports \"{}\"", stp_mcec_type1_cfg_type_to_str(parameter.type),
                  title(parameter.type)),
      options);
  say("scope", scope_text(parameter), options);
  say("length", std::to_string(parameter.length) + " bytes", options);
  say("default", default_text(parameter), options);
  say("values", value_help(parameter.type), options);
  say("mismatch", fmt::format("{} (0x{:08X})", result_name(parameter.mismatch), parameter.mismatch),
      options);
  Pair pair;
  prepare(pair);
  for (const CommandName &command : commands()) {
    for (const bool positive : {true, false}) {
      for (const Json &effect : effect_of(pair, command, positive)) {
        const std::string text = effect;
        if (!text.starts_with(parameter.key + " = ")) continue;
        say("set by", (positive ? "" : "no ") + command.key + ", for instance " + text, options);
      }
    }
  }
}

void explain_command(const CommandName &command, const ShowOptions &options) {
  say("command", fmt::format("{} (identifier {}, {})", command.key, command.id, command.enumerator),
      options);
  say("extractor", command.extractor, options);
  say("asked",
      command.is_gated ? "only while a multi-chassis trunk exists"
                       : "always; port by port, whether it is a member",
      options);
  Pair pair;
  prepare(pair);
  say("set form", joined(effect_of(pair, command, true)), options);
  say("no form", joined(effect_of(pair, command, false)), options);
}

void explain_code(uint32_t code, const ShowOptions &options) {
  say_code(code, options);
  for (const ParameterName &parameter : parameters()) {
    if (parameter.mismatch != code) continue;
    say("means",
        fmt::format("The parameter \"{}\" is the first that differs between the peers.",
                    stp_mcec_type1_cfg_type_to_str(parameter.type)),
        options);
    say("from", "the checks", options);
    say("look at", "Its value on both switches: a check in the lab shows them side by side.",
        options);
    fmt::print("\n");
    explain_parameter(parameter, options);
    return;
  }
  for (const Explanation &explanation : explanations) {
    if (explanation.code != code) continue;
    say("means", explanation.meaning, options);
    say("from", explanation.who, options);
    say("look at", explanation.look, options);
    return;
  }
  say("means", "No code of this library: it passes on those of the platform's TLV library.",
      options);
  say("from", "whatever reads or writes an array", options);
  say("look at", "The line before it in the event history, and the array.", options);
}

}  // namespace

bool explain(const std::string &what, const ShowOptions &options) {
  const auto number = parse_number(what);
  bool known = false;
  const auto heading = [&known] {
    if (known) fmt::print("\n");
    known = true;
  };
  const ParameterName *parameter =
      number ? find_parameter(*number) : find_parameter(std::string_view(what));
  if (parameter != nullptr) {
    heading();
    explain_parameter(*parameter, options);
  }
  const CommandName *command =
      number ? find_command(*number) : find_command(std::string_view(what));
  if (command != nullptr) {
    heading();
    explain_command(*command, options);
  }
  const auto code = find_result(what);
  if (code && (!known || *code <= 1 || *code > UINT16_MAX)) {
    heading();
    explain_code(*code, options);
  }
  return known;
}

void list(const std::string &what, const ShowOptions &options) {
  if (what != "commands") {
    std::vector<std::vector<Cell>> rows;
    for (const Json &parameter : parameters_json()) {
      rows.push_back({{std::to_string(parameter["type"].get<uint32_t>())},
                      {parameter["parameter"]},
                      {parameter["scope"]},
                      {std::to_string(parameter["length"].get<uint32_t>())},
                      {parameter["default"]},
                      {fmt::format("0x{:08X}", parameter["mismatch"]["code"].get<uint32_t>())}});
    }
    show_table({"type", "parameter", "scope", "length", "default", "mismatch"}, rows, options);
  }
  if (what != "parameters") {
    std::vector<std::vector<Cell>> rows;
    for (const Json &command : commands_json()) {
      rows.push_back({{std::to_string(command["id"].get<uint32_t>())},
                      {command["command"]},
                      {joined(command["set"])},
                      {joined(command["no"])}});
    }
    show_table({"id", "command", "set form", "no form"}, rows, options);
    fmt::print(
        "    Forms as they are without further attributes, for VLANs 10-20 and for a member "
        "port.\n");
  }
}

Json list_json() {
  Json codes = Json::array();
  for (const auto &[name, code] : results()) codes.push_back({{"name", name}, {"code", code}});
  return {{"parameters", parameters_json()}, {"commands", commands_json()}, {"results", codes}};
}

}  // namespace lab
