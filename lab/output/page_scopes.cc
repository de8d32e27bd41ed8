#include <fmt/core.h>

#include "draimiofaf/types.h"
#include "output/page.h"
#include "output/words.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr Look different_look = {"bad", "≠"};
constexpr Look accepted_look = {"accepted", "≈"};
constexpr Look same_look = {"good", "="};

constexpr Look class_looks[] = {different_look, accepted_look, same_look};

ScopeClass class_of(const ScopeReport &scope) {
  if (!is_agreed(find_verdict(scope))) return ScopeClass::different;
  return has_accepted(scope) ? ScopeClass::accepted : ScopeClass::agreed;
}

// The page's address of a group, by the position of its first scope in the report.
std::string anchor_of(const ScopeGroup &group, const PairReport &report) {
  return fmt::format("scope-{}", group.scopes.front() - report.checks.data());
}

std::string write_value(const ParameterReport &parameter, std::size_t side) {
  const auto text = find_value_texts(parameter)[side];
  if (!text) return "<span class=\"none\">not sent</span>";
  std::string html;
  const auto &[left, right] = parameter.values;
  if (left && right && left != right) {
    const Difference both = difference(parameter.type, *left, *right);
    const std::string &only = side == 0 ? both.left : both.right;
    const char *off = parameter.type == STP_MCEC_TYPE1_STP_ENDIS ? "off " : "";
    if (!only.empty()) {
      html = fmt::format("<div class=\"only\">{}only here: {}</div>", off, folded(only));
    }
  }
  html += folded(*text);
  if (parameter.digests && (*parameter.digests)[side]) {
    html += fmt::format("<div class=\"digest\">digest <code>{}</code></div>",
                        *(*parameter.digests)[side]);
  }
  return html;
}

Look look_of(const ScopeReport &scope, const ParameterReport &parameter) {
  if (is_different(parameter)) {
    return parameter.accepted || scope.accepted ? accepted_look : different_look;
  }
  const auto &[left, right] = parameter.states;
  if (left == State::same && right == State::same) return same_look;
  return {"other", left == State::same_on_twins || right == State::same_on_twins ? "≈" : "–"};
}

// A row below a parameter or a table.
std::string write_note_row(const char *look, const std::string &html) {
  if (html.empty()) return "";
  return fmt::format("<tr class=\"{}\"><td colspan=\"4\">{}</td></tr>\n", look, html);
}

std::string write_parameter(const ScopeGroup &group, const ParameterReport &parameter,
                            const SideNames &names) {
  const Look look = look_of(*group.scopes.front(), parameter);
  std::string rows = fmt::format(
      "<tr class=\"{}\"><th scope=\"row\">{}</th><td>{}</td><td>{}</td>"
      "<td class=\"state\"><span aria-hidden=\"true\">{}</span> {}</td></tr>\n",
      look.name, parameter_key(parameter.type), write_value(parameter, 0),
      write_value(parameter, 1), look.sign, describe_states(parameter, names));
  rows += write_note_row("accepted", describe_accepted(parameter.accepted));
  if (!parameter.fix || parameter.accepted) return rows;
  const std::string fix = describe_fix(widen_fix(parameter.fix->fix, group), names);
  const std::string steps = has_mode_change(parameter) ? std::string("; ") + mode_steps : "";
  return rows + write_note_row("fix", "Fix: " + folded(fix) + steps + ".");
}

std::string write_parameters(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &scope = *group.scopes.front();
  std::string rows;
  for (const ParameterReport &parameter : scope.parameters) {
    rows += write_parameter(group, parameter, names);
  }
  if (rows.empty()) rows = write_note_row("other", "neither switch has a parameter to send");
  rows += write_note_row("accepted", describe_accepted(scope.accepted));
  const std::string missing = describe_missing_row(group, names);
  if (!missing.empty()) rows += write_note_row("fix", "Fix: " + folded(missing));
  for (std::size_t side = 0; side < names.size(); ++side) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      const std::string text = describe_inconsistent_port(port, scope.scope.ends[side]);
      rows += write_note_row(
          "bad", fmt::format("<span aria-hidden=\"true\">≠</span> Inconsistent on the {}: {}",
                             names[side], isolated(text)));
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
                       isolated(left), names[1], isolated(right));
  }
  if (scope.codes[0] != 0) return fmt::format("{}<code>{}</code>", accepted, isolated(left));
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
    const std::string name = isolated(cut(group.name, 60));
    texts.push_back(as_links ? fmt::format("<a href=\"#{}\">{}</a>", anchor_of(group, report), name)
                             : name);
  }
  return listed(texts);
}

std::string write_scope_tables(const PairReport &report, ScopeClass wanted) {
  const SideNames &names = side_names(report);
  const Look &look = class_looks[std::size_t(wanted)];
  std::string html;
  for (const ScopeGroup &group : group_scopes(select_scopes(report, wanted))) {
    html += fmt::format(
        R"(<table class="scope" id="{}">
<caption><h3>{}</h3> <span class="{}"><span aria-hidden="true">{}</span> {}</span></caption>
<thead><tr><th scope="col">parameter</th><th scope="col">{} <small>{}</small></th>)"
        R"(<th scope="col">{} <small>{}</small></th><th scope="col">comparison</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
        anchor_of(group, report), folded(describe_group(group, names)), look.name, look.sign,
        describe_scope_verdict(*group.scopes.front(), names), names[0],
        isolated(name_side(report.sides[0])), names[1], isolated(name_side(report.sides[1])),
        write_parameters(group, names));
  }
  return html;
}

std::string write_parameter_summary(const PairReport &report) {
  std::string rows;
  for (const auto &[type, count] : summarize(report.checks).parameters) {
    const Look &look = count.differ.empty() ? same_look : different_look;
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td class=\"state\"><span "
        "aria-hidden=\"true\">{}</span> {} of {}</td><td>{}</td></tr>\n",
        look.name, parameter_key(type), look.sign, count.differ.size(), count.scopes,
        count.differ.empty() ? "none" : link_scopes(count.differ, report));
  }
  if (rows.empty()) return "";
  return fmt::format(R"(<table class="summary">
<caption class="unseen">In how many scopes each parameter differs</caption>
<thead><tr><th scope="col">parameter</th><th scope="col">scopes that differ</th>)"
                     R"(<th scope="col">which</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
                     rows);
}

}  // namespace lab
