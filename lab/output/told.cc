#include "output/told.h"

#include <algorithm>
#include <string_view>

namespace lab {
namespace {

// What a sentence begins with, and a field of its own does not.
constexpr std::string_view found_verb = "found ";

}  // namespace

bool agrees(const Json &check) {
  const Json &verdicts = check["verdicts"];
  return !check.contains("inconsistent") &&
         std::all_of(verdicts.begin(), verdicts.end(),
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

Json errors_to_json(const std::string &source, const InputErrors &errors) {
  Json told = Json::array();
  for (const InputError &error : errors) {
    Json one = {{"source", source}, {"where", place_of(error)}};
    if (error.line > 0) {
      one["line"] = error.line;
      one["column"] = error.column;
    }
    const bool has_verb = error.found.starts_with(found_verb);
    one["found"] = error.found.substr(has_verb ? found_verb.size() : 0);
    one["expected"] = error.expected;
    told.push_back(std::move(one));
  }
  return told;
}

}  // namespace lab
