#include <fmt/core.h>

#include "output/events.h"
#include "output/layout.h"
#include "output/words.h"

namespace lab {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t most_lines = 10;
constexpr std::size_t most_scopes = 4;
constexpr std::size_t most_parameters = 12;
constexpr std::size_t longest_field = 60;

// Keeps the first lines and adds the number of the others: "and 3 more rows".
Lines limit_lines(Lines lines, const std::string &start, const char *what) {
  if (lines.size() <= most_lines) return lines;
  const std::size_t more = lines.size() - most_lines;
  lines.resize(most_lines);
  lines.push_back(start + "and " + format_count(more, what));
  return lines;
}

std::string name_scope(const std::string &scope) {
  return scope == PairScope{}.name ? "the switch" : scope;
}

// --- verdicts ---

// "ifi-port-type, inconsistent ports on left".
std::string describe_reasons(const ScopeReport &scope) {
  if (const auto missing = missing_side(scope)) {
    return std::string("on ") + switch_names[1 - *missing] + " only";
  }
  std::vector<std::string> texts;
  for (const ParameterReport &parameter : scope.parameters) {
    if (is_different(parameter) && !parameter.accepted) {
      texts.push_back(parameter_key(parameter.type));
    }
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (scope.inconsistent[side].empty()) continue;
    texts.push_back(std::string("inconsistent ports on ") + switch_names[side]);
  }
  return texts.empty() ? "not checked" : list_first(texts, most_parameters);
}

std::string describe_outcome(Outcome outcome) {
  constexpr const char *texts[] = {"the pair agrees", "the pair does not agree",
                                   "the pair was not compared"};
  return texts[std::size_t(outcome)];
}

std::string describe_verdict(const PairReport &report) {
  const std::string causes = describe_causes(report);
  return describe_outcome(find_outcome(report)) + (causes.empty() ? "" : ": " + causes);
}

// --- a change ---

const FieldValue *find_value(const std::optional<Row> &row, const std::string &name) {
  const auto found = row ? row->find(name) : Row::const_iterator();
  return row && found != row->end() ? &found->second : nullptr;
}

std::string describe_value(const FieldValue *value) {
  if (value == nullptr) return "(none)";
  const auto *list = std::get_if<std::vector<std::string>>(value);
  const std::string text = printable(list ? join(*list, ",") : std::get<std::string>(*value));
  if (text.empty()) return "''";
  if (text.size() <= longest_field) return visible(text);
  return visible(whole_characters(text, longest_field)) + "...";
}

// "root_guard true->(none)" for each field that has changed.
std::vector<std::string> describe_fields(const RowChange &change) {
  const char *arrow = is_utf8_locale() ? "\u2192" : "->";
  Row all = change.before.value_or(Row{});
  if (change.after) all.insert(change.after->begin(), change.after->end());
  std::vector<std::string> fields;
  for (const auto &[name, value] : all) {
    const FieldValue *before = find_value(change.before, name);
    const FieldValue *after = find_value(change.after, name);
    if (before && after && *before == *after) continue;
    fields.push_back(printable(name) + " " + (change.before ? describe_value(before) + arrow : "") +
                     describe_value(after));
  }
  return fields;
}

std::string describe_row(const RowChange &change) {
  const std::string text = std::string(switch_names[change.side]) + " " + printable(change.row);
  if (!change.before && !change.after) return text + " changed";
  if (!change.after) return text + " removed";
  const std::string fields = list_first(describe_fields(change), most_lines);
  if (change.before) return text + " " + fields;
  return text + " added" + (fields.empty() ? "" : " (" + fields + ")");
}

std::string describe_scope_change(const ScopeReport &scope, const ChangeEffect &effect) {
  // By the state before: none, disagreed, agreed.
  constexpr const char *agrees[] = {" is new and agrees", " now agrees", " still agrees"};
  constexpr const char *differs[] = {" is new and does not agree", " still does not agree",
                                     " no longer agrees"};
  const auto before = effect.agreed.find(scope.scope.name);
  const std::size_t row = before == effect.agreed.end() ? 0 : before->second ? 2 : 1;
  return name_scope(scope.scope.name) +
         (is_agreed(scope) ? agrees[row]
                           : std::string(differs[row]) + " (" + describe_reasons(scope) + ")");
}

// "PortChannel10 now agrees; the pair agrees".
std::string describe_effect(const Event &event) {
  if (!event.outcome) return "the verdict is unknown";
  std::vector<std::string> effects;
  for (const ScopeReport &scope : event.effect.checks) {
    effects.push_back(describe_scope_change(scope, event.effect));
  }
  for (const std::string &scope : event.effect.gone) {
    effects.push_back(name_scope(scope) + " was removed");
  }
  std::string text = list_first(effects, most_scopes, "; ");
  if (event.outcome != event.outcome_before) {
    text += (text.empty() ? "" : "; ") + describe_outcome(*event.outcome);
  }
  return text.empty() ? "no verdict changes" : text;
}

Lines list_change(const Event &event) {
  Lines lines = limit_lines(describe_each(event.rows, describe_row), "", "more row");
  if (event.rows.size() != 1) lines.emplace_back("together");
  lines.back() += ": " + describe_effect(event);
  return lines;
}

// --- the other kinds ---

Lines list_connection(const Event &event, const std::string &start) {
  if (!event.comparison) return {start + "the verdict is unknown"};
  Lines lines = {start + describe_verdict(*event.comparison)};
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const std::string &source = event.comparison->sides[side].source;
    if (event.notifications[side] || source.find("://") == source.npos) continue;
    lines.push_back(fmt::format("{} sends no notifications and is polled", switch_names[side]));
  }
  return lines;
}

Lines list_errors(const Event &event) {
  const std::string side = switch_names[event.side];
  Lines lines = describe_each(event.errors, [&](const InputError &error) {
    const std::string place = place_of(error);
    return side + " " + (place.empty() ? event.source : place) + ": " + error_text(error);
  });
  lines = limit_lines(std::move(lines), side + " ", "more error");
  lines.push_back(side + ": the verdict is unknown");
  return lines;
}

Lines list_notes(const Event &event) {
  Lines lines;
  for (const auto &[what, notes] :
       {std::pair("warning: ", &event.appeared), {"warning gone: ", &event.gone_notes}}) {
    for (const NoteGroup &group : group_notes(*notes))
      lines.push_back(what + describe_notes(group));
  }
  return lines;
}

Lines list_fleet(const FleetStatus &fleet) {
  Lines lines = {fmt::format("{}: {} agree, {} disagree, {} incomplete, {} unknown",
                             format_count(fleet.size(), "pair"), count_pairs(fleet, Outcome::agree),
                             count_pairs(fleet, Outcome::disagree),
                             count_pairs(fleet, Outcome::incomplete), count_pairs(fleet, {}))};
  for (const PairStatus &pair : fleet) {
    if (pair.outcome == Outcome::agree) continue;
    lines.push_back((pair.name.empty() ? "" : pair.name + ": ") +
                    (pair.outcome ? describe_verdict(*pair.comparison) : describe_unknown(pair)));
  }
  return lines;
}

Lines list_event(const Event &event) {
  const std::string side = switch_names[event.side];
  switch (event.kind) {
    case Event::Kind::compared:
      return list_connection(event, "");
    case Event::Kind::connected:
      return list_connection(event, side + " is connected: ");
    case Event::Kind::disconnected:
      return {side + " is disconnected: " + event.reason};
    case Event::Kind::error:
      return list_errors(event);
    case Event::Kind::changed:
      return list_change(event);
    case Event::Kind::note:
      return list_notes(event);
    case Event::Kind::summary:
      return list_fleet(event.fleet);
  }
  return {};
}

}  // namespace

std::string describe_causes(const PairReport &report) {
  const std::vector<std::string> off = list_sides_off(report, switch_names);
  const Outcome outcome = find_outcome(report);
  if (outcome == Outcome::incomplete) return describe_incomplete(report.incomplete.front().reason);
  if (outcome == Outcome::agree) return off.empty() ? "" : "spanning tree is off on both";
  std::vector<std::string> causes =
      describe_each(off, [](const std::string &side) { return "spanning tree is off on " + side; });
  for (const ScopeReport &scope : report.checks) {
    if (is_agreed(scope)) continue;
    causes.push_back(name_scope(scope.scope.name) + " (" + describe_reasons(scope) + ")");
  }
  if (find_reasons(report).contains(Reason::warnings)) causes.emplace_back("warnings remain");
  return list_first(causes, most_scopes, "; ");
}

std::string describe_unknown(const PairStatus &status) {
  const std::string unknown = "the verdict is unknown";
  if (!status.unknown) return unknown;
  const auto &[kind, side, reason, error] = *status.unknown;
  if (kind == UnknownCause::Kind::failed) return unknown + ": " + reason;
  return unknown + ": " + switch_names[side] +
         (kind == UnknownCause::Kind::disconnected
              ? " is disconnected: " + reason
              : ": " + place_of(error) + " " + error_text(error));
}

std::string describe_event(const Event &event) {
  const std::string start = event.pair.empty() ? "" : event.pair + " ";
  const std::string hour =
      format_time(event.time).substr(std::string_view("2024-01-01T").size(), 8);
  std::string text;
  for (const std::string &line : list_event(event)) {
    text += fmt::format("{}{} {}\n", start, hour, line);
  }
  return escape_for_locale(text);
}

}  // namespace lab
