#include "output/words.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

std::string describe_cause(const ScopeReport &scope, std::size_t side) {
  const uint32_t code = scope.codes[side];
  if (code == 0) return "agrees";
  if (const Parameter *parameter = parameter_of_mismatch(code)) {
    return "DIFFERENT: " + parameter->key;
  }
  if (const auto missing = missing_side(scope)) {
    return std::string("MISSING on the ") + switch_names[*missing];
  }
  for (const ParameterReport &parameter : scope.parameters) {
    if (code == STP_MCEC_ERR_FAILURE && parameter.states[side] == State::missing_at_peer) {
      return std::string("MISSING on the ") + switch_names[1 - side] + ": " +
             parameter_key(parameter.type);
    }
  }
  return "NOT CHECKED";
}

std::string describe_size(const Bytes &value) {
  return value.size() == sizeof(uint32_t) ? fmt::format(" ({})", word_of(value))
                                          : fmt::format(" ({} bytes)", value.size());
}

}  // namespace

std::string describe_result(uint32_t code) {
  return fmt::format("{} (0x{:08X})", code == 0 ? "ok" : result_name(code), code);
}

std::string describe_code(const ScopeReport &scope, std::size_t side) {
  const std::string cause = describe_cause(scope, side);
  const uint32_t code = scope.codes[side];
  if (code == 0) return cause;
  return fmt::format("{}   ({}, 0x{:08X})", cause, result_name(code), code);
}

std::string describe_scope(const ScopeReport &report) {
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
    title += ": " + left + " on the left, " + right + " on the right";
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

std::string describe_states(const ParameterReport &parameter) {
  std::string text;
  for (std::size_t side = 0; side < parameter.states.size(); ++side) {
    const State state = parameter.states[side];
    if (state == State::missing_at_peer) {
      return std::string("missing on the ") + switch_names[1 - side];
    }
    if (state == State::only_at_peer) continue;
    const std::string name = state_name(state);
    if (text.empty()) {
      text = name;
    } else if (text != name) {
      text = "left: " + text + "; right: " + name;
    }
  }
  return text;
}

std::array<std::optional<std::string>, 2> describe_values(const ParameterReport &parameter) {
  std::array<std::optional<std::string>, 2> texts;
  for (std::size_t side = 0; side < texts.size(); ++side) {
    if (parameter.values[side]) texts[side] = display(parameter.type, *parameter.values[side]);
  }
  if (!texts[0] || texts[0] != texts[1]) return texts;
  const Bytes &left = *parameter.values[0];
  const Bytes &right = *parameter.values[1];
  if (left == right) return texts;
  const bool is_same_size = describe_size(left) == describe_size(right);
  *texts[0] += is_same_size ? " (other bytes than the peer's)" : describe_size(left);
  *texts[1] += is_same_size ? "" : describe_size(right);
  return texts;
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
