#include "output/check_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "draimiofaf/types.h"
#include "output/fix.h"
#include "output/words.h"
#include "report/groups.h"
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
  const std::string left = describe_code(scope, 0, style.sides);
  const bool agrees = is_agreed(find_verdict(scope));
  if (scope.codes[0] == 0 && scope.codes[1] == 0) {
    print_verdict(
        "",
        has_inconsistent_ports(scope) ? "the first ports of each switch agree" : "the pair agrees",
        Colour::green, style);
  } else if (left == describe_code(scope, 1, style.sides)) {
    print_verdict("", (agrees ? "ACCEPTED: " : "") + left, agrees ? Colour::yellow : Colour::red,
                  style);
  } else {
    for (std::size_t side = 0; side < style.sides.size(); ++side) {
      print_verdict(fmt::format("{:6}", style.sides[side]),
                    (agrees ? "ACCEPTED: " : "") + describe_code(scope, side, style.sides),
                    agrees ? Colour::yellow : code_colour(scope, side), style);
    }
  }
  print_inconsistent_ports(scope, style);
}

// --- parameters ---

Cell state_cell(const ParameterReport &parameter, const Style &style) {
  const std::string text = describe_states(parameter, style.sides);
  if (parameter.accepted) return {text + ", accepted", Colour::yellow};
  const bool is_same = std::all_of(
      parameter.states.begin(), parameter.states.end(),
      [](State state) { return state == State::same || state == State::same_on_twins; });
  return {text, is_different(parameter) ? Colour::red : is_same ? Colour::green : Colour::yellow};
}

// The beginning of a long list.
std::string cut_list(const std::string &text) {
  if (text.size() <= 2 * long_value) return text;
  const std::size_t end = text.find_last_of(",;", 2 * long_value - 4);
  return text.substr(0, end == text.npos ? 0 : end) + ",...";
}

bool is_list(uint16_t type) {
  return type == STP_MCEC_TYPE1_STP_ENDIS || type == STP_MCEC_TYPE1_MST_REGION_VI_MAP;
}

// What a side alone has of a long value.
Cell difference_cell(uint16_t type, const char *side, const std::string &text) {
  if (text.empty()) return {"nothing more"};
  const bool is_disabled = type == STP_MCEC_TYPE1_STP_ENDIS;
  return {is_disabled ? fmt::format("off on the {} only: {}", side, text)
                      : fmt::format("only {}: {}", side, text)};
}

std::array<Cell, 2> value_cells(const ParameterReport &parameter, const Style &style) {
  auto texts = find_visible_texts(parameter);
  const auto is_long = [](const std::optional<std::string> &text) {
    return text && text->size() > long_value;
  };
  const uint16_t type = parameter.type;
  if (texts[0] && texts[1] && (is_long(texts[0]) || is_long(texts[1]))) {
    const Difference only = difference(type, *parameter.values[0], *parameter.values[1]);
    if (!only.left.empty() || !only.right.empty()) {
      return {difference_cell(type, style.sides[0], only.left),
              difference_cell(type, style.sides[1], only.right)};
    }
  }
  for (auto &text : texts) {
    if (text && style.is_short && is_list(type)) text = cut_list(*text);
  }
  return {Cell{texts[0].value_or("-")}, Cell{texts[1].value_or("-")}};
}

void print_parameters(const ScopeReport &scope, const Style &style) {
  std::vector<std::vector<Cell>> rows;
  for (const ParameterReport &parameter : scope.parameters) {
    auto [left, right] = value_cells(parameter, style);
    rows.push_back({{parameter_key(parameter.type)}, left, right, state_cell(parameter, style)});
  }
  if (rows.empty()) {
    put_line("neither switch has a parameter to send", indent);
    return;
  }
  put_table({"parameter", style.sides[0], style.sides[1], "comparison"}, rows, style.layout);
  for (const ParameterReport &parameter : scope.parameters) {
    if (!parameter.digests) continue;
    for (std::size_t side = 0; side < style.sides.size(); ++side) {
      put_line(fmt::format("region digest, {}: {}", style.sides[side],
                           (*parameter.digests)[side].value_or("-")),
               indent);
    }
  }
}

void print_twins(const ScopeReport &scope, const Style &style) {
  if (!scope.pass) return;
  for (const auto &[key, vlans] : {std::pair{"pass", *scope.pass}, {"fail", *scope.fail}}) {
    const std::string text = vlans.none() ? "none" : vlan_text(vlans);
    const bool is_cut = style.is_short && vlans == *scope.pass && cut_list(text) != text;
    put_wrapped(
        is_cut ? fmt::format("twin VLANs that {}: {} VLANs, {}", key, vlans.count(), cut_list(text))
               : fmt::format("twin VLANs that {}: {}", key, text),
        style.layout, indent);
  }
}

void print_accepted(const std::string &what, const std::optional<Acceptance> &accepted,
                    const Style &style) {
  if (!accepted) return;
  put_wrapped(what + describe_acceptance(*accepted), style.layout, indent + 5, "    accepted: ");
}

// What to do about a group of scopes, once for all of them.
void print_fixes(const ScopeReport &scope, const ScopeGroup &group, const Style &style) {
  print_accepted("", scope.accepted, style);
  for (const ParameterReport &parameter : scope.parameters) {
    print_accepted(parameter_key(parameter.type) + ": ", parameter.accepted, style);
    if (!parameter.fix || parameter.accepted) continue;
    const Fix &fix = parameter.fix->fix;
    put_wrapped(describe_fix(widen_fix(fix, group), style.sides), style.layout, indent + 5,
                "    fix: ");
    if (parameter.type == STP_MCEC_TYPE1_STP_MODE && (fix.alone[0] || fix.alone[1])) {
      put_wrapped("disable the old mode on the switch first, then enable the new one", style.layout,
                  indent + 5);
    }
  }
}

void print_missing_rows(const ScopeGroup &group, const Style &style) {
  const ScopeReport &first = *group.scopes.front();
  if (first.missing_row.empty() || first.accepted) return;
  std::string row = first.missing_row;
  if (row.ends_with(first.scope.name)) {
    row.replace(row.size() - first.scope.name.size(), first.scope.name.size(), group.name);
  }
  put_wrapped(fmt::format("add {} on {}", row, style.sides[*missing_side(first)]), style.layout,
              indent + 5, "    fix: ");
}

void print_group(const ScopeGroup &group, const Style &style) {
  const ScopeReport &first = *group.scopes.front();
  const std::size_t count = group.scopes.size();
  const std::string title = count == 1 ? describe_scope(first, style.sides)
                                       : fmt::format("{} ({} channels)", group.name, count);
  put_wrapped(coloured(title, Colour::bold, style.layout), style.layout, indent);
  print_verdicts(first, style);
  if (style.quiet) return;
  print_parameters(first, style);
  print_twins(first, style);
  print_fixes(first, group, style);
  print_missing_rows(group, style);
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
    add(std::string("missing on the ") + style.sides[side], summary.missing[side]);
  }
  add("inconsistent ports", summary.inconsistent);
  add("accepted", summary.accepted);
  const std::size_t count = summary.disagreeing;
  const std::string text =
      fmt::format("looked at {} scope{}; {} differ{}{}{}", checks.size(),
                  checks.size() == 1 ? "" : "s", count == 0 ? "none" : std::to_string(count),
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
  std::vector<const ScopeReport *> printed;
  for (const ScopeReport &scope : checks) {
    if (!style.only_different || !is_agreed(find_verdict(scope)) || has_accepted(scope)) {
      printed.push_back(&scope);
    }
  }
  for (const ScopeGroup &group : group_scopes(printed)) print_group(group, style);
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
    const auto texts = find_value_texts(parameter);
    const auto text_before = before != nullptr ? find_value_texts(*before)[side] : std::nullopt;
    rows.push_back({{key},
                    {text_before.value_or("-")},
                    {texts[side].value_or("-")},
                    {texts[1 - side].value_or("-")},
                    state_cell(parameter, style)});
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
