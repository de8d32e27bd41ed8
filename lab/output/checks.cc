#include "output/checks.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

#include "draimiofaf/types.h"
#include "output/told.h"
#include "output/words.h"
#include "switch/names.h"

namespace lab {
namespace {

constexpr std::size_t indent = 4;

// Values longer than this that differ show what only they have.
constexpr std::size_t long_value = 24;

std::string text_or(const Json &text, const char *otherwise) {
  return text.is_string() ? text.get<std::string>() : otherwise;
}

// --- verdicts ---

Colour verdict_colour(const Json &check, const std::string &side) {
  return check["verdicts"][side]["code"] == 0 ? Colour::green : Colour::red;
}

// Ports that are not set like the one that speaks for their channel.
void print_inconsistent_ports(const Json &check, const ShowOptions &options) {
  const Json inconsistent = check.value("inconsistent", Json::object());
  for (const auto &[side, ports] : inconsistent.items()) {
    for (const Json &port : ports) {
      std::string keys;
      for (const Json &key : port["parameters"]) {
        keys += (keys.empty() ? "" : ", ") + key.get<std::string>();
      }
      const std::string text = fmt::format("INCONSISTENT on the {}: port {} is not set like {}: {}",
                                           side, port["port"].get<std::string>(),
                                           text_or(check["ports"][side], "the first"), keys);
      put_wrapped(coloured(text, Colour::red, options.layout), options.layout, indent);
    }
  }
}

void show_verdicts(const Json &check, const ShowOptions &options) {
  const Json &verdicts = check["verdicts"];
  const auto say = [&](const std::string &heading, const std::string &text, Colour colour) {
    put_wrapped(coloured(text, colour, options.layout), options.layout, indent + heading.size(),
                std::string(indent, ' ') + heading);
  };
  const std::string left = verdict_text(check, switch_names[0]);
  if (std::all_of(verdicts.begin(), verdicts.end(), [](const Json &v) { return v["code"] == 0; })) {
    say("",
        check.contains("inconsistent") ? "the ports that speak for it agree" : "the pair agrees",
        Colour::green);
  } else if (left == verdict_text(check, switch_names[1])) {
    say("", left, Colour::red);
  } else {
    for (const char *side : switch_names) {
      say(fmt::format("{:6}", side), verdict_text(check, side), verdict_colour(check, side));
    }
  }
  print_inconsistent_ports(check, options);
}

// --- parameters ---

Cell state_cell(const Json &parameter) {
  const std::string text = state_text(parameter);
  if (is_out_of_step(parameter)) return {text, Colour::red};
  return {text, text.starts_with("same") ? Colour::green : Colour::yellow};
}

bool is_long(const Json &parameter) {
  return text_or(parameter["left"], "").size() > long_value ||
         text_or(parameter["right"], "").size() > long_value;
}

Cell value_cell(const Json &parameter, const std::string &side) {
  if (parameter.contains("difference") && is_long(parameter)) {
    const std::string only = parameter["difference"][side];
    return {only.empty() ? "nothing more" : "only " + side + ": " + only};
  }
  return {text_or(parameter[side], "-")};
}

void show_parameters(const Json &check, const ShowOptions &options) {
  std::vector<std::vector<Cell>> rows;
  for (const Json &parameter : check["parameters"]) {
    rows.push_back({{parameter["parameter"].get<std::string>()},
                    value_cell(parameter, switch_names[0]),
                    value_cell(parameter, switch_names[1]),
                    state_cell(parameter)});
    if (!parameter.contains("digest")) continue;
    const Json &digest = parameter["digest"];
    const bool same = digest["left"] == digest["right"];
    rows.push_back({{"  region digest"},
                    {text_or(digest["left"], "-")},
                    {text_or(digest["right"], "-")},
                    {same ? "same" : "different", same ? Colour::green : Colour::red}});
  }
  if (rows.empty()) {
    put_line("neither switch has a parameter to send", indent);
  } else {
    put_table({"parameter", "left", "right", "comparison"}, rows, options.layout);
  }
}

void show_twins(const Json &check, const ShowOptions &options) {
  if (!check.contains("pass")) return;
  for (const char *key : {"pass", "fail"}) {
    const std::string vlans = check[key];
    put_wrapped(fmt::format("twin VLANs that {}: {}", key, vlans.empty() ? "none" : vlans),
                options.layout, indent);
  }
}

// What would bring a parameter into step, a line each.
void print_fixes(const Json &check, const ShowOptions &options) {
  for (const Json &parameter : check["parameters"]) {
    if (!parameter.contains("fix") || !parameter["fix"].contains("text")) continue;
    put_wrapped(parameter["fix"]["text"], options.layout, indent + 5, "    fix: ");
  }
}

void show_check(const Json &check, const ShowOptions &options) {
  put_wrapped(coloured(scope_title(check), Colour::bold, options.layout), options.layout, indent);
  show_verdicts(check, options);
  if (options.quiet) return;
  show_parameters(check, options);
  show_twins(check, options);
  print_fixes(check, options);
}

// --- now and then ---

const Json *find_parameter_of(const Json &check, const Json &parameter) {
  for (const Json &candidate : check["parameters"]) {
    if (candidate["parameter"] == parameter["parameter"]) return &candidate;
  }
  return nullptr;
}

void show_moved(const char *what, const std::vector<std::string> &keys, Colour colour,
                const ShowOptions &options) {
  if (keys.empty()) return;
  std::string text = std::string(what) + ":";
  for (const std::string &key : keys) text += " " + key;
  put_wrapped(coloured(text, colour, options.layout), options.layout, indent);
}

}  // namespace

void show_checks(const Json &checks, const ShowOptions &options) {
  if (checks.empty()) put_line("neither switch has such a channel", indent);
  for (const Json &check : checks) {
    if (!options.only_different || !agrees(check)) show_check(check, options);
  }
  if (checks.size() > 1) show_summary(checks, options);
}

void show_summary(const Json &checks, const ShowOptions &options) {
  std::size_t out_of_step = 0;
  std::map<std::string, std::size_t> by_parameter;
  std::map<std::string, std::size_t> missing;
  std::size_t inconsistent = 0;
  for (const Json &check : checks) {
    if (agrees(check)) continue;
    ++out_of_step;
    if (check.contains("inconsistent")) ++inconsistent;
    if (check.contains("only")) {
      ++missing[other_side(check["only"])];
    } else {
      for (const std::string &key : differing(check)) ++by_parameter[key];
    }
  }
  std::string by;
  const auto add = [&by](const std::string &what, std::size_t count) {
    by += fmt::format("{}{} ({})", by.empty() ? ": " : ", ", what, count);
  };
  for (const Parameter &parameter : parameters()) {
    const auto found = by_parameter.find(parameter.key);
    if (found != by_parameter.end()) add(found->first, found->second);
  }
  for (const auto &[side, count] : missing) add("missing on the " + side, count);
  if (inconsistent > 0) add("inconsistent ports", inconsistent);
  const std::string text = fmt::format("looked at {} scope{}; {} differ{}{}", checks.size(),
                                       checks.size() == 1 ? "" : "s",
                                       out_of_step == 0 ? "none" : std::to_string(out_of_step),
                                       out_of_step == 1 || out_of_step == 0 ? "s" : "", by);
  put_wrapped(coloured(text, out_of_step == 0 ? Colour::green : Colour::red, options.layout),
              options.layout, indent);
}

void show_now_and_then(const Json &now, const Json &then, const std::string &side,
                       const ShowOptions &options) {
  const char *const peer = other_side(side);
  const Json absent = {{"left", nullptr}, {"right", nullptr}, {"states", Json::object()}};
  std::vector<std::vector<Cell>> rows;
  std::vector<std::string> out_of_step;
  std::vector<std::string> into_step;
  for (const Json &parameter : then["parameters"]) {
    const Json *known = find_parameter_of(now, parameter);
    const Json &before = known != nullptr ? *known : absent;
    if (before == parameter) continue;
    const std::string key = parameter["parameter"];
    rows.push_back({{key},
                    {text_or(before[side], "-")},
                    {text_or(parameter[side], "-")},
                    {text_or(parameter[peer], "-")},
                    state_cell(parameter)});
    if (is_out_of_step(parameter) && !is_out_of_step(before)) out_of_step.push_back(key);
    if (!is_out_of_step(parameter) && is_out_of_step(before)) into_step.push_back(key);
  }
  put_wrapped(coloured(scope_title(then), Colour::bold, options.layout), options.layout, indent);
  for (const char *judge : switch_names) {
    put_wrapped(fmt::format("now {}; then {}", verdict_text(now, judge),
                            coloured(verdict_text(then, judge), verdict_colour(then, judge),
                                     options.layout)),
                options.layout, indent + 6, fmt::format("    {:6}", judge));
  }
  if (!rows.empty()) {
    put_table({"parameter", side + " now", side + " then", peer, "comparison"}, rows,
              options.layout);
  }
  show_twins(then, options);
  print_inconsistent_ports(then, options);
  show_moved("would put out of step", out_of_step, Colour::red, options);
  show_moved("would bring into step", into_step, Colour::green, options);
}

}  // namespace lab
