#include "output/check_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/fix.h"
#include "output/words.h"
#include "report/summary.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr std::size_t indent = 4;

// Of longer values that differ only what one side alone has is printed.
constexpr std::size_t long_value = 24;

// --- verdicts ---

Colour code_colour(const ScopeReport &scope, std::size_t side) {
  return scope.codes[side] == 0 ? Colour::green : Colour::red;
}

void print_inconsistent_ports(const ScopeReport &scope, const Style &style) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const PairScope::End &end = scope.scope.ends[side];
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      std::vector<std::string> keys;
      for (const uint16_t type : port.types) keys.push_back(parameter_key(type));
      const std::string text =
          fmt::format("INCONSISTENT on the {}: port {} is not set like {}: {}", switch_names[side],
                      port.name, end.present ? end.port_name : "the first", join(keys));
      put_wrapped(coloured(text, Colour::red, style.layout), style.layout, indent);
    }
  }
}

void print_verdict(const std::string &heading, const std::string &text, Colour colour,
                   const Style &style) {
  put_wrapped(coloured(text, colour, style.layout), style.layout, indent + heading.size(),
              std::string(indent, ' ') + heading);
}

void print_verdicts(const ScopeReport &scope, const Style &style) {
  const std::string left = describe_code(scope, 0);
  if (scope.codes[0] == 0 && scope.codes[1] == 0) {
    print_verdict(
        "", has_inconsistent_ports(scope) ? "the ports that speak for it agree" : "the pair agrees",
        Colour::green, style);
  } else if (left == describe_code(scope, 1)) {
    print_verdict("", left, Colour::red, style);
  } else {
    for (std::size_t side = 0; side < switch_names.size(); ++side) {
      print_verdict(fmt::format("{:6}", switch_names[side]), describe_code(scope, side),
                    code_colour(scope, side), style);
    }
  }
  print_inconsistent_ports(scope, style);
}

// --- parameters ---

Cell state_cell(const ParameterReport &parameter) {
  const bool is_same = std::all_of(
      parameter.states.begin(), parameter.states.end(),
      [](State state) { return state == State::same || state == State::same_on_twins; });
  return {describe_states(parameter), is_different(parameter) ? Colour::red
                                      : is_same               ? Colour::green
                                                              : Colour::yellow};
}

std::array<Cell, 2> value_cells(const ParameterReport &parameter) {
  const auto texts = describe_values(parameter);
  const auto is_long = [](const std::optional<std::string> &text) {
    return text && text->size() > long_value;
  };
  if (texts[0] && texts[1] && (is_long(texts[0]) || is_long(texts[1]))) {
    const Difference only = difference(parameter.type, *parameter.values[0], *parameter.values[1]);
    const auto cell = [](const char *side, const std::string &text) {
      return Cell{text.empty() ? "nothing more" : std::string("only ") + side + ": " + text};
    };
    if (!only.left.empty() || !only.right.empty()) {
      return {cell("left", only.left), cell("right", only.right)};
    }
  }
  return {Cell{texts[0].value_or("-")}, Cell{texts[1].value_or("-")}};
}

void print_parameters(const ScopeReport &scope, const Style &style) {
  std::vector<std::vector<Cell>> rows;
  for (const ParameterReport &parameter : scope.parameters) {
    auto [left, right] = value_cells(parameter);
    rows.push_back({{parameter_key(parameter.type)}, left, right, state_cell(parameter)});
    if (!parameter.digests) continue;
    const auto &[left_digest, right_digest] = *parameter.digests;
    const bool is_same = left_digest == right_digest;
    rows.push_back({{"  region digest"},
                    {left_digest.value_or("-")},
                    {right_digest.value_or("-")},
                    {is_same ? "same" : "different", is_same ? Colour::green : Colour::red}});
  }
  if (rows.empty()) {
    put_line("neither switch has a parameter to send", indent);
  } else {
    put_table({"parameter", "left", "right", "comparison"}, rows, style.layout);
  }
}

void print_twins(const ScopeReport &scope, const Style &style) {
  if (!scope.pass) return;
  for (const auto &[key, vlans] : {std::pair{"pass", *scope.pass}, {"fail", *scope.fail}}) {
    put_wrapped(
        fmt::format("twin VLANs that {}: {}", key, vlans.none() ? "none" : vlan_text(vlans)),
        style.layout, indent);
  }
}

void print_fixes(const ScopeReport &scope, const Style &style) {
  for (const ParameterReport &parameter : scope.parameters) {
    if (!parameter.fix) continue;
    put_wrapped(describe_fix(parameter.fix->fix), style.layout, indent + 5, "    fix: ");
  }
}

void print_scope(const ScopeReport &scope, const Style &style) {
  put_wrapped(coloured(describe_scope(scope), Colour::bold, style.layout), style.layout, indent);
  print_verdicts(scope, style);
  if (style.quiet) return;
  print_parameters(scope, style);
  print_twins(scope, style);
  print_fixes(scope, style);
}

void print_summary(const std::vector<ScopeReport> &checks, const Style &style) {
  const Summary summary = summarize(checks);
  std::vector<std::string> causes;
  const auto add = [&causes](const std::string &what, std::size_t count) {
    if (count > 0) causes.push_back(fmt::format("{} ({})", what, count));
  };
  for (const auto &[type, count] : summary.parameters) {
    add(parameter_key(type), count.differ.size());
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    add(std::string("missing on the ") + switch_names[side], summary.missing[side]);
  }
  add("inconsistent ports", summary.inconsistent);
  const std::size_t count = summary.disagreeing;
  const std::string text =
      fmt::format("looked at {} scope{}; {} differ{}{}{}", summary.scopes,
                  summary.scopes == 1 ? "" : "s", count == 0 ? "none" : std::to_string(count),
                  count <= 1 ? "s" : "", causes.empty() ? "" : ": ", join(causes));
  put_wrapped(coloured(text, count == 0 ? Colour::green : Colour::red, style.layout), style.layout,
              indent);
}

// --- now and then ---

const ParameterReport *find_parameter_report(const ScopeReport &scope, uint16_t type) {
  for (const ParameterReport &parameter : scope.parameters) {
    if (parameter.type == type) return &parameter;
  }
  return nullptr;
}

void print_keys(const char *what, const std::vector<std::string> &keys, Colour colour,
                const Style &style) {
  if (keys.empty()) return;
  put_wrapped(coloured(what + join(keys, " "), colour, style.layout), style.layout, indent);
}

}  // namespace

void print_checks(const std::vector<ScopeReport> &checks, const Style &style) {
  if (checks.empty()) put_line("neither switch has such a channel", indent);
  for (const ScopeReport &scope : checks) {
    if (!style.only_different || !is_agreed(find_verdict(scope))) print_scope(scope, style);
  }
  if (checks.size() > 1) print_summary(checks, style);
}

void print_now_and_then(const ScopeReport &now, const ScopeReport &then, std::size_t side,
                        const Style &style) {
  std::vector<std::vector<Cell>> rows;
  std::vector<std::string> differing;
  std::vector<std::string> agreeing;
  for (const ParameterReport &parameter : then.parameters) {
    const ParameterReport *before = find_parameter_report(now, parameter.type);
    if (before != nullptr && *before == parameter) continue;
    const std::string key = parameter_key(parameter.type);
    const auto texts = describe_values(parameter);
    const auto text_before = before != nullptr ? describe_values(*before)[side] : std::nullopt;
    rows.push_back({{key},
                    {text_before.value_or("-")},
                    {texts[side].value_or("-")},
                    {texts[1 - side].value_or("-")},
                    state_cell(parameter)});
    const bool was_different = before != nullptr && is_different(*before);
    if (is_different(parameter) && !was_different) differing.push_back(key);
    if (!is_different(parameter) && was_different) agreeing.push_back(key);
  }
  put_wrapped(coloured(describe_scope(then), Colour::bold, style.layout), style.layout, indent);
  for (std::size_t judge = 0; judge < switch_names.size(); ++judge) {
    put_wrapped(
        fmt::format("now {}; then {}", describe_code(now, judge),
                    coloured(describe_code(then, judge), code_colour(then, judge), style.layout)),
        style.layout, indent + 6, fmt::format("    {:6}", switch_names[judge]));
  }
  if (!rows.empty()) {
    const std::string name = switch_names[side];
    put_table({"parameter", name + " now", name + " then", switch_names[1 - side], "comparison"},
              rows, style.layout);
  }
  print_twins(then, style);
  print_inconsistent_ports(then, style);
  print_keys("would put out of step: ", differing, Colour::red, style);
  print_keys("would bring into step: ", agreeing, Colour::green, style);
}

}  // namespace lab
