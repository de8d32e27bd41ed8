#include "output/page_scopes.h"

#include <fmt/core.h>

#include "draimiofaf/types.h"
#include "output/fix.h"
#include "output/page_text.h"
#include "output/words.h"
#include "report/groups.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

// Of more groups of scopes than these, only the first are named.
constexpr std::size_t groups_named = 8;

ScopeClass class_of(const ScopeReport &scope) {
  if (!is_agreed(find_verdict(scope))) return ScopeClass::different;
  return has_accepted(scope) ? ScopeClass::accepted : ScopeClass::agreed;
}

std::string title_of(const ScopeGroup &group) {
  return group.scopes.front()->scope.kind == PairScope::Kind::of_switch ? "Switch" : group.name;
}

// The page's address of a group, by the position of its first scope in the report.
std::string anchor_of(const ScopeGroup &group, const PairReport &report) {
  return fmt::format("scope-{}", group.scopes.front() - report.checks.data());
}

// --- values ---

std::string write_difference(const ParameterReport &parameter, std::size_t side) {
  const auto &[left, right] = parameter.values;
  if (!left || !right || left == right) return "";
  const Difference both = difference(parameter.type, *left, *right);
  const std::string &only = side == 0 ? both.left : both.right;
  if (only.empty()) return "";
  return fmt::format("<div class=\"only\">{}only here: {}</div>",
                     parameter.type == STP_MCEC_TYPE1_STP_ENDIS ? "off " : "", folded(only));
}

std::string write_value(const ParameterReport &parameter, std::size_t side) {
  const auto text = find_value_texts(parameter)[side];
  if (!text) return "<span class=\"none\">not sent</span>";
  std::string html = write_difference(parameter, side) + folded(*text);
  if (parameter.digests && (*parameter.digests)[side]) {
    html += fmt::format("<div class=\"digest\">digest <code>{}</code></div>",
                        escaped(*(*parameter.digests)[side]));
  }
  return html;
}

// What differs has a sign of its own beside the words, for whoever sees no colours.
struct Sign {
  const char *look;
  const char *sign;
};
constexpr Sign different_sign = {"bad", "≠"};
constexpr Sign accepted_sign = {"accepted", "≈"};
constexpr Sign same_sign = {"good", "="};

Sign find_sign(const ScopeReport &scope, const ParameterReport &parameter) {
  if (is_different(parameter)) {
    return parameter.accepted || scope.accepted ? accepted_sign : different_sign;
  }
  const auto &[left, right] = parameter.states;
  if (left == State::same && right == State::same) return same_sign;
  return {"other", left == State::same_on_twins || right == State::same_on_twins ? "≈" : "–"};
}

Sign find_sign(const ScopeReport &scope) {
  constexpr Sign signs[] = {different_sign, accepted_sign, same_sign};
  return signs[std::size_t(class_of(scope))];
}

// --- rows below a parameter or a table ---

std::string write_note_row(const char *look, const std::string &html) {
  return fmt::format("<tr class=\"{}\"><td colspan=\"4\">{}</td></tr>\n", look, html);
}

std::string write_accepted_row(const std::optional<Acceptance> &accepted) {
  if (!accepted) return "";
  return write_note_row("accepted", "Accepted: " + isolated(describe_acceptance(*accepted)));
}

std::string write_fix_row(const ParameterReport &parameter, const ScopeGroup &group,
                          const SideNames &names) {
  if (!parameter.fix || parameter.accepted) return "";
  const Fix &fix = parameter.fix->fix;
  std::string html = "Fix: " + folded(describe_fix(widen_fix(fix, group), names));
  if (parameter.type == STP_MCEC_TYPE1_STP_MODE && (fix.alone[0] || fix.alone[1])) {
    html += ". Disable the old mode on the switch first, then enable the new one.";
  }
  return write_note_row("fix", html);
}

// What is to be done about a channel that one switch lacks.
std::string write_missing_row(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &first = *group.scopes.front();
  if (first.missing_row.empty() || first.accepted) return "";
  return write_note_row("fix", fmt::format("Fix: add {} on {}", folded(widen_missing_row(group)),
                                           names[*missing_side(first)]));
}

std::string write_inconsistent_ports(const ScopeReport &scope, const SideNames &names) {
  std::string rows;
  for (std::size_t side = 0; side < names.size(); ++side) {
    for (const InconsistentPort &port : scope.inconsistent[side]) {
      std::vector<std::string> keys;
      for (const uint16_t type : port.types) keys.push_back(parameter_key(type));
      rows += write_note_row(
          "bad", fmt::format("<span aria-hidden=\"true\">≠</span> Inconsistent on the {}: port {} "
                             "is not set like {}: {}",
                             names[side], isolated(port.name),
                             isolated(scope.scope.ends[side].port_name), escaped(join(keys))));
    }
  }
  return rows;
}

// --- a table for each group ---

std::string write_verdict_line(const ScopeReport &scope, const SideNames &names) {
  const char *accepted = class_of(scope) == ScopeClass::accepted ? "accepted; " : "";
  if (const auto missing = missing_side(scope)) {
    return fmt::format("{}only the {} switch has this channel", accepted, names[1 - *missing]);
  }
  const std::string left = escaped(describe_code(scope, 0, names));
  const std::string right = escaped(describe_code(scope, 1, names));
  if (left != right) {
    return fmt::format("{}{}: <code>{}</code>, {}: <code>{}</code>", accepted, names[0], left,
                       names[1], right);
  }
  if (scope.codes[0] != 0) return fmt::format("{}both switches: <code>{}</code>", accepted, left);
  return has_inconsistent_ports(scope) ? "inconsistent ports" : "agrees";
}

std::string write_ports(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &report = *group.scopes.front();
  if (group.scopes.size() > 1) return fmt::format(" ({} channels)", group.scopes.size());
  const PairScope &scope = report.scope;
  const char *pod = report.on_pod ? " on a pod unit" : "";
  if (scope.kind == PairScope::Kind::of_switch || missing_side(report)) return pod;
  const std::string &left = scope.ends[0].port_name;
  const std::string &right = scope.ends[1].port_name;
  if (left != right) {
    return fmt::format(" ({} on {}, {} on {}){}", isolated(left), names[0], isolated(right),
                       names[1], pod);
  }
  return (left != scope.name ? fmt::format(" ({})", isolated(left)) : "") + pod;
}

std::string write_parameter_rows(const ScopeGroup &group, const SideNames &names) {
  const ScopeReport &scope = *group.scopes.front();
  std::string rows;
  for (const ParameterReport &parameter : scope.parameters) {
    const Sign sign = find_sign(scope, parameter);
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td>{}</td><td>{}</td>"
        "<td class=\"state\"><span aria-hidden=\"true\">{}</span> {}</td></tr>\n",
        sign.look, escaped(parameter_key(parameter.type)), write_value(parameter, 0),
        write_value(parameter, 1), sign.sign, escaped(describe_states(parameter, names)));
    rows += write_accepted_row(parameter.accepted) + write_fix_row(parameter, group, names);
  }
  if (rows.empty()) rows = write_note_row("other", "neither switch has a parameter to send");
  return rows + write_accepted_row(scope.accepted) + write_missing_row(group, names) +
         write_inconsistent_ports(scope, names);
}

std::string write_scope_table(const ScopeGroup &group, const PairReport &report) {
  const SideNames &names = side_names(report);
  const ScopeReport &scope = *group.scopes.front();
  const Sign sign = find_sign(scope);
  return fmt::format(
      R"(<table class="scope" id="{}">
<caption><h3>{}{}</h3> <span class="{}"><span aria-hidden="true">{}</span> {}</span></caption>
<thead><tr><th scope="col">parameter</th><th scope="col">{} <small>{}</small></th>)"
      R"(<th scope="col">{} <small>{}</small></th><th scope="col">comparison</th></tr></thead>
<tbody>
{}</tbody>
</table>
)",
      anchor_of(group, report), folded(title_of(group)), write_ports(group, names), sign.look,
      sign.sign, write_verdict_line(scope, names), names[0], isolated(name_side(report.sides[0])),
      names[1], isolated(name_side(report.sides[1])), write_parameter_rows(group, names));
}

}  // namespace

std::vector<const ScopeReport *> select_scopes(const PairReport &report, ScopeClass wanted) {
  std::vector<const ScopeReport *> scopes;
  for (const ScopeReport &scope : report.checks) {
    if (class_of(scope) == wanted) scopes.push_back(&scope);
  }
  return scopes;
}

std::string link_scopes(const std::vector<const ScopeReport *> &scopes, const PairReport &report,
                        bool as_links) {
  std::vector<std::string> texts;
  std::size_t rest = scopes.size();
  for (const ScopeGroup &group : group_scopes(scopes)) {
    if (texts.size() == groups_named) {
      texts.push_back(fmt::format("{} more", rest));
      break;
    }
    rest -= group.scopes.size();
    const std::string name = isolated(cut(title_of(group), 60));
    texts.push_back(as_links ? fmt::format("<a href=\"#{}\">{}</a>", anchor_of(group, report), name)
                             : name);
  }
  return listed(texts);
}

const std::string &name_side(const SideReport &side) {
  return side.name.empty() ? side.source : side.name;
}

std::string write_scope_tables(const PairReport &report, ScopeClass wanted) {
  std::string html;
  for (const ScopeGroup &group : group_scopes(select_scopes(report, wanted))) {
    html += write_scope_table(group, report);
  }
  return html;
}

std::string write_parameter_summary(const PairReport &report) {
  std::string rows;
  for (const auto &[type, count] : summarize(report.checks).parameters) {
    const Sign sign = count.differ.empty() ? same_sign : different_sign;
    rows += fmt::format(
        "<tr class=\"{}\"><th scope=\"row\">{}</th><td class=\"state\"><span "
        "aria-hidden=\"true\">{}</span> {} of {}</td><td>{}</td></tr>\n",
        sign.look, escaped(parameter_key(type)), sign.sign, count.differ.size(), count.scopes,
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
