#include "language/told.h"

#include <algorithm>

namespace lab {

bool agrees(const Json &check) {
  const Json &verdicts = check["verdicts"];
  return !check.contains("odd") && std::all_of(verdicts.begin(), verdicts.end(),
                                               [](const Json &v) { return v["code"] == 0; });
}

bool all_agree(const Json &checks) {
  return std::all_of(checks.begin(), checks.end(), agrees);
}

bool is_out_of_step(const Json &parameter) {
  const Json &states = parameter["states"];
  return std::any_of(states.begin(), states.end(), [](const Json &state) {
    return state == "different" || state == "missing at the peer";
  });
}

std::vector<std::string> differing(const Json &check) {
  std::vector<std::string> keys;
  for (const Json &parameter : check["parameters"]) {
    if (is_out_of_step(parameter)) keys.push_back(parameter["parameter"]);
  }
  return keys;
}

}  // namespace lab
