#include <fmt/core.h>

#include "draimiofaf/types.h"
#include "output/page.h"
#include "output/words.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr Look class_looks[] = {bad_look, accepted_look, good_look};

ScopeClass class_of(const ScopeReport &scope) {
  if (!is_agreed(scope)) return ScopeClass::different;
  return has_accepted(scope) ? ScopeClass::accepted : ScopeClass::agreed;
}

// The id of a group's table: the position of its first scope in the report.
std::string find_anchor(const ScopeGroup &group, const PairReport &report) {
  return fmt::format("scope-{}", group.scopes.front() - report.checks.data());
}

std::string write_value_cell(const ParameterReport &parameter, std::size_t side) {
  const auto text = find_value_texts(parameter)[side];
  if (!text) return "<span class=\"none\">not sent</span>";
  std::string html;
  const Difference both = find_difference(parameter);
  const std::string &only = side == 0 ? both.left : both.right;
  if (!only.empty()) {
    const char *off = parameter.type == STP_MCEC_TYPE1_STP_ENDIS ? "off " : "";
    html = fmt::format("<div class=\"only\">{}only here: {}</div>", off, fold_text(only));
  }
  html += fold_text(*text);
  if (parameter.digests && (*parameter.digests)[side]) {
    html += fmt::format("<div class=\"digest\">digest <code>{}</code></div>",
                        *(*parameter.digests)[side]);
  }
  return html;
}

Look find_parameter_look(const ScopeReport &scope, const ParameterReport &parameter) {
  if (is_different(parameter)) {
    return parameter.accepted || scope.accepted ? accepted_look : bad_look;
  }
  const auto &[left, right] = parameter.states;
  if (left == State::same && right == State::same) return good_look;
  return {"other", left == State::same_on_twins || right == State::same_on_twins ? "≈" : "–"};
}

// A row of one cell below a parameter or at the end of a table.
std::string write_note_row(const char *look, const std::string &html) {
  if (html.empty()) return "";
  return fmt::format("<tr class=\"{}\"><td colspan=\"4\">{}</td></tr>\n", look, html);
}

std::string write_parameter(const ScopeGroup &group, const ParameterReport &parameter,
                            const SideNames &names) {
  const Look look = find_parameter_look(*group.scopes.front(), parameter);
  std::string rows = write_row(
      fmt::format("class=\"{}\"", look.name),
      {parameter_key(parameter.type), write_value_cell(parameter, 0),
       write_value_cell(parameter, 1), write_state_cell(look, describe_states(parameter, names))});
  rows += write_note_row("caution", describe_accepted(parameter.accepted));
  if (!parameter.fix || parameter.accepted) return rows;
  const std::string fix = describe_fix(parameter.fix->fix, names, &group);
  const std::string steps = has_mode_change(parameter) ? std::string("; ") + mode_steps : "";
  return rows + write_note_row("fix", "Fix: " + fold_text(fix) + steps + ".");
}

std::string write_parameters(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &scope = *group.scopes.front();
  std::string rows;
  for (const ParameterReport &parameter : scope.parameters) {
    rows += write_parameter(group, parameter, names);
  }
  if (rows.empty()) rows = write_note_row("other", "neither switch sends a parameter");
  rows += write_note_row("caution", describe_accepted(scope.accepted));
  const std::string missing = describe_missing_row(group, names);
  if (!missing.empty()) rows += write_note_row("fix", "Fix: " + fold_text(missing));
  for (std::size_t side = 0; side < names.size(); ++side) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      const std::string text = describe_inconsistent_port(port, scope.scope.ends[side]);
      rows += write_note_row(
          "bad", write_state_cell(bad_look, fmt::format("Inconsistent on the {}: {}", names[side],
                                                        isolate(text))));
    }
  }
  return rows;
}

std::string describe_scope_verdict(const ScopeReport &scope, const SideNames &names) {
  const std::string left = describe_code(scope, 0, names);
  const std::string right = describe_code(scope, 1, names);
  const char *accepted = class_of(scope) == ScopeClass::accepted ? "accepted; " : "";
  if (left != right) {
    return fmt::format("{}{}: <code>{}</code>, {}: <code>{}</code>", accepted, names[0],
                       isolate(left), names[1], isolate(right));
  }
  if (scope.codes[0] != 0) return fmt::format("{}<code>{}</code>", accepted, isolate(left));
  return has_inconsistent_ports(scope) ? "inconsistent ports" : "agrees";
}

}  // namespace

Scopes select_scopes(const PairReport &report, ScopeClass wanted) {
  Scopes scopes;
  for (const ScopeReport &scope : report.checks) {
    if (class_of(scope) == wanted) scopes.push_back(&scope);
  }
  return scopes;
}

std::string link_scopes(const Scopes &scopes, const PairReport &report, bool as_links) {
  constexpr std::size_t most_groups = 8;
  std::vector<std::string> texts;
  std::size_t rest = scopes.size();
  for (const ScopeGroup &group : group_scopes(scopes)) {
    if (texts.size() == most_groups) {
      texts.push_back(fmt::format("{} more", rest));
      break;
    }
    rest -= group.scopes.size();
    const std::string name = isolate(cut(group.name, 60));
    texts.push_back(
        as_links ? fmt::format("<a href=\"#{}\">{}</a>", find_anchor(group, report), name) : name);
  }
  return listed(texts);
}

std::string write_scope_tables(const PairReport &report, ScopeClass wanted) {
  const SideNames &names = side_names(report);
  std::string html;
  for (const ScopeGroup &group : group_scopes(select_scopes(report, wanted))) {
    const std::string caption =
        fmt::format("<h3 id=\"{}\">{}</h3> {}", find_anchor(group, report),
                    fold_text(describe_group(group, names)),
                    write_state_cell(class_looks[std::size_t(wanted)],
                                     describe_scope_verdict(*group.scopes.front(), names)));
    const auto column = [&](std::size_t side) {
      return fmt::format("{} <small>{}</small>", names[side],
                         isolate(name_side(report.sides[side])));
    };
    html += write_table("scope", caption, {"parameter", column(0), column(1), "comparison"},
                        write_parameters(group, names));
  }
  return html;
}

std::string write_parameter_summary(const PairReport &report) {
  std::string rows;
  for (const auto &[type, count] : summarize(report.checks).parameters) {
    const Look &look = count.differ.empty() ? good_look : bad_look;
    rows += write_row(
        fmt::format("class=\"{}\"", look.name),
        {parameter_key(type),
         write_state_cell(look, fmt::format("{} of {}", count.differ.size(), count.scopes)),
         count.differ.empty() ? "none" : link_scopes(count.differ, report)});
  }
  if (rows.empty()) return "";
  return write_table("summary", "Number of scopes in which each parameter differs",
                     {"parameter", "scopes that differ", "which"}, rows);
}

}  // namespace lab
