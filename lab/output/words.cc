#include "output/words.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

std::string describe_cause(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const uint32_t code = scope.codes[side];
  if (code == 0) return "agrees";
  if (const Parameter *parameter = parameter_of_mismatch(code)) {
    return "DIFFERENT: " + parameter->key;
  }
  if (const auto missing = missing_side(scope)) {
    return std::string("MISSING on the ") + names[*missing];
  }
  for (const ParameterReport &parameter : scope.parameters) {
    if (code == STP_MCEC_ERR_FAILURE && parameter.states[side] == State::missing_at_peer) {
      return std::string("MISSING on the ") + names[1 - side] + ": " +
             parameter_key(parameter.type);
    }
  }
  return "NOT CHECKED";
}

}  // namespace

std::string describe_result(uint32_t code) {
  return fmt::format("{} (0x{:08X})", code == 0 ? "ok" : result_name(code), code);
}

std::string describe_code(const ScopeReport &scope, std::size_t side, const SideNames &names) {
  const std::string cause = describe_cause(scope, side, names);
  const uint32_t code = scope.codes[side];
  if (code == 0) return cause;
  return fmt::format("{}   ({}, 0x{:08X})", cause, result_name(code), code);
}

std::string describe_scope(const ScopeReport &report, const SideNames &names) {
  const PairScope &scope = report.scope;
  if (scope.kind == PairScope::Kind::of_switch) return "switch";
  std::string title = scope.name;
  const std::string &left = scope.ends[0].port_name;
  const std::string &right = scope.ends[1].port_name;
  if (scope.kind == PairScope::Kind::of_port) {
    title = "port " + scope.name;
  } else if (missing_side(report)) {
    // The one port says nothing more than the channel's name.
  } else if (left != right) {
    title += ": " + left + " on the " + names[0] + ", " + right + " on the " + names[1];
  } else if (left != scope.name) {
    title += ": " + left;
  }
  return title + (report.on_pod ? " (pod)" : "");
}

const char *state_name(State state) {
  constexpr const char *names[] = {"same",
                                   "different",
                                   "same on the twin VLANs",
                                   "missing at the peer",
                                   "only at the peer",
                                   "not compared in this mode",
                                   "not compared without twin VLANs",
                                   "ignored on pod ports",
                                   "not compared without a mode"};
  static_assert(std::size(names) == std::size_t(State::not_without_mode) + 1);
  return names[std::size_t(state)];
}

std::string describe_states(const ParameterReport &parameter, const SideNames &names) {
  std::string text;
  for (std::size_t side = 0; side < parameter.states.size(); ++side) {
    const State state = parameter.states[side];
    if (state == State::missing_at_peer) {
      return std::string("missing on the ") + names[1 - side];
    }
    if (state == State::only_at_peer) continue;
    const std::string name = state_name(state);
    if (text.empty()) {
      text = name;
    } else if (text != name) {
      text = std::string(names[0]) + ": " + text + "; " + names[1] + ": " + name;
    }
  }
  return text;
}

std::array<std::optional<std::string>, 2> find_visible_texts(const ParameterReport &parameter) {
  auto texts = find_value_texts(parameter);
  for (auto &text : texts) {
    if (text) text = visible(*text);
  }
  return texts;
}

std::string describe_acceptance(const Acceptance &acceptance) {
  return acceptance.reason + (acceptance.until.empty() ? "" : " (until " + acceptance.until + ")");
}

const char *describe_incomplete(Incomplete reason) {
  return reason == Incomplete::no_channels ? "neither switch has a multi-chassis channel"
                                           : "no multi-chassis channel carries a VLAN on both "
                                             "switches, so the disabled VLANs were "
                                             "not compared";
}

std::string list_first(const std::vector<std::string> &texts, std::size_t most,
                       const char *between) {
  std::string text;
  for (std::size_t i = 0; i < std::min(texts.size(), most); ++i) {
    text += (i > 0 ? between : "") + texts[i];
  }
  if (texts.size() > most) text += fmt::format(" and {} more", texts.size() - most);
  return text;
}

}  // namespace lab
