#include "output/explain.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "output/advice.h"
#include "pair/pair.h"
#include "switch/digest.h"
#include "switch/values.h"

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

// --- what the library makes of its commands ---

// A switch with a trunk, a member port and every parameter of the switch cached, on which commands
// are tried.
Settings sample_switch() {
  Settings settings;
  const std::string channel = "channel " + std::to_string(sample_channel);
  channel_named(settings, channel).id = sample_channel;
  port_at(settings, sample_port).channel = sample_channel;
  for (const ParameterName &parameter : parameters()) {
    if (!parameter.is_global) continue;
    settings.parameters.push_back({parameter.type, default_value(parameter)});
  }
  return settings;
}

Bytes host_words(std::initializer_list<uint32_t> words) {
  Bytes bytes(words.size() * sizeof(uint32_t));
  std::copy(words.begin(), words.end(), reinterpret_cast<uint32_t *>(bytes.data()));
  return bytes;
}

// "stp-mode = Rapid-PVST": what one form of a command, with no more than it needs, sets on a switch
// that nothing else was done to.
std::vector<std::string> effect_of(Pair &pair, const CommandName &command, bool positive) {
  constexpr std::size_t trial = 0;
  ask(pair, trial, Delete{});
  ask(pair, trial, Delete{{false, sample_port}});
  ask(pair, trial, SetUp{sample_switch()});
  const Extracted extracted =
      ask(pair, trial,
          Command{command.id,
                  positive,
                  {{STP_MCEC_ATTR_VLAN_LIST, host_words({0, 1, 10, 20})},
                   {STP_MCEC_ATTR_IFINDEX, host_words({0, 1, 0, 0, sample_port, sample_port})}}});
  std::vector<std::string> effects;
  for (const Entry &value : extracted.values) {
    // The reset hands out a shorter VLAN map than it caches; it is shown as the default it stands
    // for.
    effects.push_back(parameter_key(value.type) + " = " + display(value.type, value.value));
  }
  return effects;
}

Json commands_json() {
  Pair pair;
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

void say(const char *heading, const std::string &text, const Layout &layout) {
  put_wrapped(text, layout, 12, heading);
}

void say_code(uint32_t code, const Layout &layout) {
  say("result", fmt::format("{} (0x{:08X})", code == 0 ? "success" : result_name(code), code),
      layout);
}

void explain_parameter(const ParameterName &parameter, const Layout &layout) {
  say("parameter",
      fmt::format("{} (type {}, {})", parameter.key, parameter.type, parameter.enumerator), layout);
  say("called",
      fmt::format("\"{}\", in reports \"{}\"", stp_mcec_type1_cfg_type_to_str(parameter.type),
                  title(parameter)),
      layout);
  say("scope", scope_text(parameter), layout);
  say("length", std::to_string(parameter.length) + " bytes", layout);
  say("default", default_text(parameter), layout);
  say("values", value_help(parameter), layout);
  if (parameter.type == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
    say("digest",
        fmt::format("Bridges do not show the map itself, but its IEEE 802.1Q configuration digest; "
                    "that of the default is {}.",
                    region_digest(default_value(parameter))),
        layout);
  }
  say("mismatch", fmt::format("{} (0x{:08X})", result_name(parameter.mismatch), parameter.mismatch),
      layout);
  say("goes wrong", advice_on(parameter.type).harm, layout);
  say("fix", advice_on(parameter.type).fix, layout);
  Pair pair;
  for (const CommandName &command : commands()) {
    for (const bool positive : {true, false}) {
      for (const std::string &text : effect_of(pair, command, positive)) {
        if (!text.starts_with(parameter.key + " = ")) continue;
        say("set by", (positive ? "" : "no ") + command.key + ", for instance " + text, layout);
      }
    }
  }
}

void explain_command(const CommandName &command, const Layout &layout) {
  say("command", fmt::format("{} (identifier {}, {})", command.key, command.id, command.enumerator),
      layout);
  say("extractor", command.extractor, layout);
  say("asked",
      command.is_gated ? "only while a multi-chassis trunk exists"
                       : "always; port by port, whether it is a member",
      layout);
  Pair pair;
  say("set form", join(effect_of(pair, command, true)), layout);
  say("no form", join(effect_of(pair, command, false)), layout);
}

void explain_code(uint32_t code, const Layout &layout) {
  say_code(code, layout);
  for (const ParameterName &parameter : parameters()) {
    if (parameter.mismatch != code) continue;
    say("means",
        fmt::format("The parameter \"{}\" is the first that differs between the peers.",
                    stp_mcec_type1_cfg_type_to_str(parameter.type)),
        layout);
    say("from", "the checks", layout);
    say("look at", "Its value on both switches: a check in the lab shows them side by side.",
        layout);
    put_line("");
    explain_parameter(parameter, layout);
    return;
  }
  for (const Explanation &explanation : explanations) {
    if (explanation.code != code) continue;
    say("means", explanation.meaning, layout);
    say("from", explanation.who, layout);
    say("look at", explanation.look, layout);
    return;
  }
  say("means", "No code of this library: it passes on those of the platform's TLV library.",
      layout);
  say("from", "whatever reads or writes an array", layout);
  say("look at", "The line before it in the event history, and the array.", layout);
}

// An identifier that the library routes although it is no command.
constexpr uint32_t routed_only = 62;

void explain_routed(const Layout &layout) {
  say("command", fmt::format("{}: no command of this library, but routed", routed_only), layout);
  say("extractor", "stp_mcec_extract_gbl_params, which refuses it as an invalid identifier",
      layout);
  say("asked", "only while a multi-chassis trunk exists; without one it is accepted unread",
      layout);
}

// "40DD003B" as well as "0x40DD003B".
std::optional<uint32_t> bare_code(const std::string &what) {
  constexpr std::size_t digits = 8;
  return what.size() == digits ? parse_number("0x" + what) : std::nullopt;
}

}  // namespace

bool explain(const std::string &what, const Layout &layout) {
  const auto number = parse_number(what);
  bool known = false;
  const auto heading = [&known] {
    if (known) put_line("");
    known = true;
  };
  const ParameterName *parameter =
      number ? find_parameter(*number) : find_parameter(std::string_view(what));
  if (parameter != nullptr) {
    heading();
    explain_parameter(*parameter, layout);
  }
  const CommandName *command =
      number ? find_command(*number) : find_command(std::string_view(what));
  if (command != nullptr) {
    heading();
    explain_command(*command, layout);
  }
  if (number == routed_only) {
    heading();
    explain_routed(layout);
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
    for (const Json &parameter : parameters_json()) {
      rows.push_back({{std::to_string(parameter["type"].get<uint32_t>())},
                      {parameter["parameter"]},
                      {parameter["scope"]},
                      {std::to_string(parameter["length"].get<uint32_t>())},
                      {parameter["default"]},
                      {fmt::format("0x{:08X}", parameter["mismatch"]["code"].get<uint32_t>())}});
    }
    put_table({"type", "parameter", "scope", "length", "default", "mismatch"}, rows, layout);
  }
  if (what != "parameters") {
    std::vector<std::vector<Cell>> rows;
    for (const Json &command : commands_json()) {
      rows.push_back({{std::to_string(command["id"].get<uint32_t>())},
                      {command["command"]},
                      {join(command["set"])},
                      {join(command["no"])}});
    }
    put_table({"id", "command", "set form", "no form"}, rows, layout);
    put_wrapped(
        "Forms as they are without further attributes, for VLANs 10-20 and for a member port.",
        layout, 4);
  }
}

Json list_json() {
  Json codes = Json::array();
  for (const auto &[name, code] : results()) codes.push_back({{"name", name}, {"code", code}});
  return {{"parameters", parameters_json()}, {"commands", commands_json()}, {"results", codes}};
}

}  // namespace lab
