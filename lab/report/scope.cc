#include "report/scope.h"

#include <algorithm>

namespace lab {

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

bool has_inconsistent_ports(const ScopeReport &scope) {
  return !scope.inconsistent[0].empty() || !scope.inconsistent[1].empty();
}

}  // namespace lab
