#include <fmt/core.h>

#include <algorithm>
#include <cstring>

#include "draimiofaf/types.h"
#include "output/print.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr std::size_t row_indent = 4;

// Of longer values that differ, only the differences are printed.
constexpr std::size_t long_value = 24;

void print_indented(const Cell &text, const Style &style, const std::string &heading = "") {
  put_wrapped(text, style.layout, row_indent + heading.size(),
              std::string(row_indent, ' ') + heading);
}

// --- verdicts ---

Color code_color(const ScopeReport &scope, std::size_t side) {
  return scope.codes[side] == 0 ? Color::green : Color::red;
}

void print_inconsistent_ports(const ScopeReport &scope, const Style &style) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      print_indented({fmt::format("INCONSISTENT on the {}: {}", style.sides[side],
                                  describe_inconsistent_port(port, scope.scope.ends[side])),
                      Color::red},
                     style);
    }
  }
}

void print_verdicts(const ScopeReport &scope, const Style &style) {
  const bool agrees = is_agreed(scope);
  const auto describe = [&](std::size_t side) {
    return (agrees ? "ACCEPTED: " : "") + describe_code(scope, side, style.sides);
  };
  if (scope.codes[0] == 0 && scope.codes[1] == 0) {
    print_indented(
        {has_inconsistent_ports(scope) ? "the first ports of each switch agree" : "the pair agrees",
         Color::green},
        style);
  } else if (describe(0) == describe(1)) {
    print_indented({describe(0), agrees ? Color::yellow : Color::red}, style);
  } else {
    const auto &[left, right] = style.sides;
    const std::size_t width = std::max(std::strlen(left), std::strlen(right)) + 1;
    for (std::size_t side = 0; side < style.sides.size(); ++side) {
      print_indented({describe(side), agrees ? Color::yellow : code_color(scope, side)}, style,
                     fmt::format("{:{}}", style.sides[side], width));
    }
  }
  print_inconsistent_ports(scope, style);
}

// --- parameters ---

Cell state_cell(const ParameterReport &parameter, const Style &style) {
  const std::string text = describe_states(parameter, style.sides);
  if (parameter.accepted) return {text + ", accepted", Color::yellow};
  const bool is_same = std::ranges::all_of(parameter.states, [](State state) {
    return state == State::same || state == State::same_on_twins;
  });
  return {text, is_different(parameter) ? Color::red : is_same ? Color::green : Color::yellow};
}

// Cuts a long list behind one of its items.
std::string cut_list(const std::string &text) {
  if (text.size() <= 2 * long_value) return text;
  const std::size_t end = text.find_last_of(",;", 2 * long_value - 4);
  return text.substr(0, end == text.npos ? 0 : end) + ",...";
}

// The part of a long value that only one side has.
Cell difference_cell(uint16_t type, const char *side, const std::string &text) {
  if (text.empty()) return "nothing more";
  const bool is_disabled = type == STP_MCEC_TYPE1_STP_ENDIS;
  return is_disabled ? fmt::format("off on the {} only: {}", side, text)
                     : fmt::format("only {}: {}", side, text);
}

std::array<Cell, 2> value_cells(const ParameterReport &parameter, const Style &style) {
  const uint16_t type = parameter.type;
  auto texts = find_value_texts(parameter);
  bool is_long = false;
  for (auto &text : texts) {
    if (text) text = visible(*text);
    is_long = is_long || (text && text->size() > long_value);
  }
  const Difference only = find_difference(parameter);
  if (is_long && (!only.left.empty() || !only.right.empty())) {
    return {difference_cell(type, style.sides[0], only.left),
            difference_cell(type, style.sides[1], only.right)};
  }
  const bool is_list = type == STP_MCEC_TYPE1_STP_ENDIS || type == STP_MCEC_TYPE1_MST_REGION_VI_MAP;
  for (auto &text : texts) {
    if (text && style.is_short && is_list) text = cut_list(*text);
  }
  return {texts[0].value_or("-"), texts[1].value_or("-")};
}

void print_parameters(const ScopeReport &scope, const Style &style) {
  std::vector<std::vector<Cell>> rows;
  for (const ParameterReport &parameter : scope.parameters) {
    const auto [left, right] = value_cells(parameter, style);
    rows.push_back({parameter_key(parameter.type), left, right, state_cell(parameter, style)});
  }
  if (rows.empty()) return put_line("neither switch sends a parameter", row_indent);
  put_table({"parameter", style.sides[0], style.sides[1], "comparison"}, rows, style.layout);
  for (const ParameterReport &parameter : scope.parameters) {
    for (std::size_t side = 0; parameter.digests && side < style.sides.size(); ++side) {
      put_line(fmt::format("region digest, {}: {}", style.sides[side],
                           (*parameter.digests)[side].value_or("-")),
               row_indent);
    }
  }
}

void print_twins(const ScopeReport &scope, const Style &style) {
  if (!scope.pass) return;
  for (const auto &[key, vlans] : {std::pair{"pass", *scope.pass}, {"fail", *scope.fail}}) {
    const std::string text = vlans.none() ? "none" : vlan_text(vlans);
    const bool is_cut = style.is_short && vlans == *scope.pass && cut_list(text) != text;
    print_indented(fmt::format("twin VLANs that {}: ", key) +
                       (is_cut ? fmt::format("{} VLANs, {}", vlans.count(), cut_list(text)) : text),
                   style);
  }
}

// The accepted differences and the fixes of a group.
void print_fixes(const ScopeGroup &group, const Style &style) {
  const ScopeReport &scope = *group.scopes.front();
  if (scope.accepted) print_indented(describe_acceptance(*scope.accepted), style, "accepted: ");
  for (const ParameterReport &parameter : scope.parameters) {
    if (parameter.accepted) {
      print_indented(
          parameter_key(parameter.type) + ": " + describe_acceptance(*parameter.accepted), style,
          "accepted: ");
    } else if (parameter.fix) {
      print_indented(describe_fix(parameter.fix->fix, style.sides, &group), style, "fix: ");
      if (has_mode_change(parameter)) put_wrapped(mode_steps, style.layout, row_indent + 5);
    }
  }
  const std::string row = describe_missing_row(group, style.sides);
  if (!row.empty()) print_indented(row, style, "fix: ");
}

void print_group(const ScopeGroup &group, const Style &style) {
  const ScopeReport &first = *group.scopes.front();
  print_indented({describe_group(group, style.sides), Color::bold}, style);
  print_verdicts(first, style);
  if (style.quiet) return;
  print_parameters(first, style);
  print_twins(first, style);
  print_fixes(group, style);
}

void print_summary(const std::vector<ScopeReport> &checks, const Style &style) {
  const Summary summary = summarize(checks);
  std::vector<std::string> causes = count_differences(summary);
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    add_count(std::string("missing on the ") + style.sides[side], summary.missing[side], causes);
  }
  add_count("inconsistent ports", summary.inconsistent, causes);
  add_count("accepted", summary.accepted, causes);
  const std::size_t count = summary.disagreeing;
  print_indented(
      {fmt::format("checked {}; {}{}{}", format_count(checks.size(), "scope"),
                   format_verb(count, "differ"), causes.empty() ? "" : ": ", join(causes)),
       count == 0 ? Color::green : Color::red},
      style);
}

}  // namespace

void print_checks(const std::vector<ScopeReport> &checks, const Style &style) {
  if (checks.empty()) put_line("neither switch has the channel", row_indent);
  std::vector<const ScopeReport *> printed;
  for (const ScopeReport &scope : checks) {
    if (!style.only_different || !is_agreed(scope) || has_accepted(scope)) {
      printed.push_back(&scope);
    }
  }
  for (const ScopeGroup &group : group_scopes(printed)) print_group(group, style);
  if (checks.size() > 1) print_summary(checks, style);
}

void print_scope_change(const ScopeReport &now, const ScopeReport &then, std::size_t side,
                        const Style &style) {
  std::vector<std::vector<Cell>> rows;
  std::vector<std::string> differing;
  std::vector<std::string> agreeing;
  for (const ParameterReport &parameter : then.parameters) {
    const ParameterReport *before = find_in(
        now.parameters, [&](const ParameterReport &each) { return each.type == parameter.type; });
    if (before != nullptr && *before == parameter) continue;
    const std::string key = parameter_key(parameter.type);
    const auto texts = find_value_texts(parameter);
    const auto text_before = before != nullptr ? find_value_texts(*before)[side] : std::nullopt;
    rows.push_back({key, text_before.value_or("-"), texts[side].value_or("-"),
                    texts[1 - side].value_or("-"), state_cell(parameter, style)});
    const bool was_different = before != nullptr && is_different(*before);
    if (is_different(parameter) && !was_different) differing.push_back(key);
    if (!is_different(parameter) && was_different) agreeing.push_back(key);
  }
  print_indented({describe_scope(then), Color::bold}, style);
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    print_indented(
        fmt::format("now {}; then {}", describe_code(now, i),
                    add_color({describe_code(then, i), code_color(then, i)}, style.layout)),
        style, fmt::format("{:6}", switch_names[i]));
  }
  if (!rows.empty()) {
    const std::string name = switch_names[side];
    put_table({"parameter", name + " now", name + " then", switch_names[1 - side], "comparison"},
              rows, style.layout);
  }
  print_twins(then, style);
  print_inconsistent_ports(then, style);
  if (!differing.empty()) {
    print_indented({"would then differ: " + join(differing, " "), Color::red}, style);
  }
  if (!agreeing.empty()) {
    print_indented({"would then agree: " + join(agreeing, " "), Color::green}, style);
  }
}

}  // namespace lab
