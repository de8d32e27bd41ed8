#include "report/scope.h"

#include <algorithm>

#include "switch/values.h"

namespace lab {
namespace {

std::string describe_size(const Bytes &value) {
  return value.size() == sizeof(uint32_t) ? " (" + std::to_string(word_of(value)) + ")"
                                          : " (" + std::to_string(value.size()) + " bytes)";
}

}  // namespace

bool is_different(const ParameterReport &parameter) {
  return std::any_of(parameter.states.begin(), parameter.states.end(), [](State state) {
    return state == State::different || state == State::missing_at_peer;
  });
}

std::optional<std::size_t> missing_side(const ScopeReport &scope) {
  for (std::size_t side = 0; side < scope.scope.ends.size(); ++side) {
    if (!scope.scope.ends[side].present) return side;
  }
  return std::nullopt;
}

std::array<std::optional<std::string>, 2> find_value_texts(const ParameterReport &parameter) {
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

bool has_accepted(const ScopeReport &scope) {
  return scope.accepted || std::any_of(scope.parameters.begin(), scope.parameters.end(),
                                       [](const ParameterReport &of) { return of.accepted; });
}

bool has_inconsistent_ports(const ScopeReport &scope) {
  return !scope.inconsistent[0].empty() || !scope.inconsistent[1].empty();
}

}  // namespace lab
