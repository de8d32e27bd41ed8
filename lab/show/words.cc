#include "show/words.h"

#include <fmt/core.h>

namespace lab {

std::string verdict_text(const Json &verdict) {
  if (!verdict.is_object()) return "";
  const std::string name = verdict.value("name", "");
  const auto code = verdict.value("code", uint32_t{0});
  return code == 0 ? name : fmt::format("{} (0x{:08X})", name, code);
}

std::string state_text(const Json &parameter) {
  std::string text;
  const Json states = parameter.value("states", Json::object());
  for (const auto &[side, state] : states.items()) {
    if (state == "missing at the peer") {
      return std::string("missing on the ") + (side == "left" ? "right" : "left");
    }
    if (states.size() > 1 && state == "only at the peer") continue;
    if (text.empty()) {
      text = state;
    } else if (text != state) {
      text = "left: " + text + "; right: " + state.get<std::string>();
    }
  }
  return text;
}

bool is_out_of_step(const std::string &state) {
  return state.find("different") != state.npos || state.starts_with("missing");
}

}  // namespace lab
