#include "report/scope.h"

#include <algorithm>

#include "switch/values.h"

namespace lab {

bool is_different(const ParameterReport &parameter) {
  return std::ranges::any_of(parameter.states, [](State state) {
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
  if (!texts[0] || texts[0] != texts[1] || parameter.values[0] == parameter.values[1]) return texts;
  const auto describe_size = [&](std::size_t side) {
    const Bytes &value = *parameter.values[side];
    return value.size() == sizeof(uint32_t) ? " (" + std::to_string(word_of(value)) + ")"
                                            : " (" + std::to_string(value.size()) + " bytes)";
  };
  const bool is_same_size = describe_size(0) == describe_size(1);
  *texts[0] += is_same_size ? " (other bytes than the peer's)" : describe_size(0);
  *texts[1] += is_same_size ? "" : describe_size(1);
  return texts;
}

bool has_accepted(const ScopeReport &scope) {
  return scope.accepted || std::ranges::any_of(scope.parameters, [](const ParameterReport &of) {
           return of.accepted.has_value();
         });
}

bool has_inconsistent_ports(const ScopeReport &scope) {
  return !scope.inconsistent[0].empty() || !scope.inconsistent[1].empty();
}

}  // namespace lab
