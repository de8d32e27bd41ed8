#include "output/words.h"

#include <fmt/core.h>

#include "draimiofaf/types.h"
#include "output/told.h"
#include "switch/names.h"

namespace lab {
namespace {

std::string verdict_words(const Json &check, const std::string &side) {
  const uint32_t code = check["verdicts"][side]["code"];
  if (code == 0) return "agrees";
  if (const Parameter *parameter = parameter_of_mismatch(code)) {
    return "DIFFERENT: " + parameter->key;
  }
  if (check.contains("only")) {
    return "MISSING on the " + std::string(other_side(check["only"]));
  }
  for (const Json &parameter : check["parameters"]) {
    if (code == STP_MCEC_ERR_FAILURE && parameter["states"][side] == "missing at the peer") {
      return std::string("MISSING on the ") + other_side(side) + ": " +
             parameter["parameter"].get<std::string>();
    }
  }
  return "NOT CHECKED";
}

}  // namespace

const char *other_side(const std::string &side) {
  return side == switch_names[0] ? switch_names[1] : switch_names[0];
}

std::string code_text(const Json &result) {
  return fmt::format("{} (0x{:08X})", result["name"].get<std::string>(),
                     result["code"].get<uint32_t>());
}

std::string verdict_text(const Json &check, const std::string &side) {
  const Json &verdict = check["verdicts"][side];
  const std::string words = verdict_words(check, side);
  if (verdict["code"] == 0) return words;
  return fmt::format("{}   ({}, 0x{:08X})", words, verdict["name"].get<std::string>(),
                     verdict["code"].get<uint32_t>());
}

std::string scope_title(const Json &check) {
  const std::string scope = check["scope"];
  if (scope == "switch") return scope;
  std::string title = scope;
  if (!check.contains("ports")) {
    title = "port " + scope;
  } else if (!check.contains("only")) {
    const std::string left = check["ports"]["left"];
    const std::string right = check["ports"]["right"];
    if (left != right) {
      title += ": " + left + " on the left, " + right + " on the right";
    } else if (left != scope) {
      title += ": " + left;
    }
  }
  return title + (check.value("pod", false) ? " (pod)" : "");
}

std::string state_text(const Json &parameter) {
  const Json &states = parameter["states"];
  std::string text;
  for (const auto &[side, state] : states.items()) {
    if (state == "missing at the peer") return std::string("missing on the ") + other_side(side);
    if (state == "only at the peer") continue;
    if (text.empty()) {
      text = state;
    } else if (text != state) {
      text = "left: " + text + "; right: " + state.get<std::string>();
    }
  }
  return text;
}

}  // namespace lab
