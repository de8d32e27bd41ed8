#include "output/event_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "output/event_json.h"
#include "output/layout.h"
#include "output/words.h"

namespace lab {
namespace {

constexpr std::size_t most_rows = 10;
constexpr std::size_t most_scopes = 4;
constexpr std::size_t most_parameters = 12;
constexpr std::size_t longest_field = 60;

std::string format_hour(const Event &event) {
  return format_time(event.time).substr(std::string_view("2024-01-01T").size(), 8);
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
    if (is_different(parameter) && !parameter.accepted)
      texts.push_back(parameter_key(parameter.type));
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (scope.inconsistent[side].empty()) continue;
    texts.push_back(std::string("inconsistent ports on ") + switch_names[side]);
  }
  if (texts.empty()) texts.emplace_back("not checked");
  return list_first(texts, most_parameters);
}

std::string describe_outcome(Outcome outcome) {
  constexpr const char *texts[] = {"the pair agrees", "the pair does not agree",
                                   "the pair was not compared"};
  return texts[std::size_t(outcome)];
}

std::string describe_verdict(const PairReport &report) {
  const std::string causes = describe_causes(report);
  return describe_outcome(find_verdict(report).outcome) + (causes.empty() ? "" : ": " + causes);
}

// --- a change ---

std::string describe_field(const std::optional<Row> &row, const std::string &name) {
  const auto found = row ? row->find(name) : Row::const_iterator{};
  if (!row || found == row->end()) return "(none)";
  std::string text;
  if (const auto *value = std::get_if<std::string>(&found->second)) {
    text = printable(*value);
  } else {
    text = printable(join(std::get<std::vector<std::string>>(found->second), ","));
  }
  if (text.empty()) return "''";
  if (text.size() <= longest_field) return visible(text);
  return visible(whole_characters(text, longest_field)) + "...";
}

std::vector<std::string> find_changed_fields(const RowChange &change) {
  std::vector<std::string> names;
  for (const auto *row : {&change.before, &change.after}) {
    const auto &other = row == &change.before ? change.after : change.before;
    for (const auto &[name, value] : row->value_or(Row{})) {
      const bool is_same = other && other->contains(name) && other->at(name) == value;
      if (!is_same && std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
      }
    }
  }
  return names;
}

std::string describe_row(const RowChange &change) {
  const char *arrow = takes_utf8() ? "\u2192" : "->";
  const std::string text = std::string(switch_names[change.side]) + " " + printable(change.row);
  if (!change.before && !change.after) return text + " changed";
  std::vector<std::string> fields;
  for (const std::string &name : find_changed_fields(change)) {
    const std::string after = describe_field(change.after, name);
    fields.push_back(printable(name) + " " +
                     (change.before ? describe_field(change.before, name) + arrow : "") + after);
  }
  if (!change.after) return text + " removed";
  if (change.before) return text + " " + list_first(fields, most_rows);
  return text + " added" + (fields.empty() ? "" : " (" + list_first(fields, most_rows) + ")");
}

std::string describe_scope_change(const ScopeReport &scope, const ChangeEffect &effect) {
  const auto before = effect.agreed.find(scope.scope.name);
  const bool is_new = before == effect.agreed.end();
  const std::string name = name_scope(scope.scope.name);
  if (is_agreed(find_verdict(scope))) {
    return name + (is_new           ? " is new and agrees"
                   : before->second ? " still agrees"
                                    : " now agrees");
  }
  return name +
         (is_new           ? " is new and does not agree"
          : before->second ? " no longer agrees"
                           : " still does not agree") +
         " (" + describe_reasons(scope) + ")";
}

// "PortChannel10 now agrees; the pair agrees".
std::string describe_effect(const Event &event) {
  if (!event.outcome) return "the verdict is not known";
  std::vector<std::string> effects;
  for (const ScopeReport &scope : event.effect.checks) {
    effects.push_back(describe_scope_change(scope, event.effect));
  }
  for (const std::string &scope : event.effect.gone) {
    effects.push_back(name_scope(scope) + " is gone");
  }
  std::string text = list_first(effects, most_scopes, "; ");
  if (event.outcome != event.outcome_before) {
    text += (text.empty() ? "" : "; ") + describe_outcome(*event.outcome);
  }
  return text.empty() ? "no verdict changes" : text;
}

std::string describe_change(const Event &event, const std::string &time) {
  const std::vector<RowChange> &rows = event.rows;
  if (rows.size() == 1) {
    return fmt::format("{} {}: {}\n", time, describe_row(rows[0]), describe_effect(event));
  }
  std::string text;
  for (std::size_t i = 0; i < std::min(rows.size(), most_rows); ++i) {
    text += fmt::format("{} {}\n", time, describe_row(rows[i]));
  }
  if (rows.size() > most_rows) {
    text += fmt::format("{} and {} more rows\n", time, rows.size() - most_rows);
  }
  return text + fmt::format("{} together: {}\n", time, describe_effect(event));
}

// --- the other kinds ---

std::string describe_polling(const Event &event, const std::string &time) {
  std::string text;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const std::string &source = event.comparison->sides[side].source;
    if (event.notifications[side] || source.find("://") == source.npos) continue;
    text += fmt::format("{} {} sends no notifications; it is read again and again\n", time,
                        switch_names[side]);
  }
  return text;
}

std::string describe_connection(const Event &event, const std::string &start) {
  if (!event.comparison) return start + "the verdict is not known\n";
  return start + describe_verdict(*event.comparison) + "\n" +
         describe_polling(event, format_hour(event));
}

std::string describe_errors(const Event &event, const std::string &start) {
  std::string text;
  for (std::size_t i = 0; i < std::min(event.errors.size(), most_rows); ++i) {
    const InputError &error = event.errors[i];
    const std::string place = place_of(error);
    text += fmt::format("{} {}: {}\n", start, place.empty() ? event.source : place, text_of(error));
  }
  if (event.errors.size() > most_rows) {
    text += fmt::format("{} and {} more errors\n", start, event.errors.size() - most_rows);
  }
  return text + start + ": the verdict is not known\n";
}

std::string describe_notes(const Event &event, const std::string &time) {
  std::string text;
  const auto add = [&](const char *what, const std::vector<NoteReport> &notes) {
    for (const NoteGroup &group : group_notes(notes)) {
      text += fmt::format("{} {}: {}{}\n", time, what,
                          group.channels.empty() ? "" : printable(group.channels) + ": ",
                          describe_note(*group.note));
    }
  };
  add("warning", event.appeared);
  add("warning gone", event.gone_notes);
  return text;
}

std::string describe_fleet(const FleetStatus &fleet, const std::string &time) {
  std::map<std::string, std::size_t> counts;
  std::string text;
  for (const PairStatus &pair : fleet) {
    ++counts[pair.outcome ? outcome_name(*pair.outcome) : "unknown"];
    if (pair.outcome == Outcome::agree) continue;
    text += fmt::format("{} {}{}\n", time, pair.name.empty() ? "" : pair.name + ": ",
                        pair.outcome ? describe_verdict(*pair.comparison) : describe_unknown(pair));
  }
  return fmt::format("{} {} pairs: {} agree, {} disagree, {} incomplete, {} not known\n", time,
                     fleet.size(), counts["agree"], counts["disagree"], counts["incomplete"],
                     counts["unknown"]) +
         text;
}

std::string describe_plainly(const Event &event) {
  const std::string time = format_hour(event);
  const std::string start = time + " " + switch_names[event.side];
  switch (event.kind) {
    case Event::Kind::compared:
      return describe_connection(event, time + " ");
    case Event::Kind::connected:
      return describe_connection(event, start + " is connected: ");
    case Event::Kind::disconnected:
      return fmt::format("{} is disconnected: {}\n", start, event.reason);
    case Event::Kind::error:
      return describe_errors(event, start);
    case Event::Kind::changed:
      return describe_change(event, time);
    case Event::Kind::note:
      return describe_notes(event, time);
    case Event::Kind::summary:
      return describe_fleet(event.fleet, time);
  }
  return "";
}

}  // namespace

std::string describe_causes(const PairReport &report) {
  const Verdict verdict = find_verdict(report);
  const auto is_off = [&](std::size_t side) {
    return report.sides[side].spanning_tree == SpanningTree::off;
  };
  if (verdict.outcome == Outcome::incomplete) {
    return describe_incomplete(report.incomplete.front().reason);
  }
  if (verdict.outcome == Outcome::agree) return is_off(0) ? "spanning tree is off on both" : "";
  std::vector<std::string> causes;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (is_off(side)) {
      causes.push_back(std::string("spanning tree is off on ") + switch_names[side]);
    }
  }
  for (const ScopeReport &scope : report.checks) {
    if (is_agreed(find_verdict(scope))) continue;
    causes.push_back(name_scope(scope.scope.name) + " (" + describe_reasons(scope) + ")");
  }
  if (std::find(verdict.reasons.begin(), verdict.reasons.end(), Reason::warnings) !=
      verdict.reasons.end()) {
    causes.emplace_back("warnings remain");
  }
  return list_first(causes, most_scopes, "; ");
}

std::string describe_unknown(const PairStatus &status) {
  const std::string unknown = "the verdict is not known";
  if (!status.unknown) return unknown;
  const UnknownCause &cause = *status.unknown;
  const std::string side = switch_names[cause.side];
  switch (cause.kind) {
    case UnknownCause::Kind::disconnected:
      return unknown + ": " + side + " is disconnected: " + cause.reason;
    case UnknownCause::Kind::error:
      return unknown + ": " + side + ": " + place_of(cause.error) + " " + text_of(cause.error);
    case UnknownCause::Kind::failed:
      return unknown + ": " + cause.reason;
  }
  return unknown;
}

std::string describe_event(const Event &event) {
  std::string text = describe_plainly(event);
  if (!event.pair.empty()) {
    const std::vector<std::string_view> lines = split(text, '\n');  // the last one is empty
    std::string named;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
      named += fmt::format("{} {}\n", event.pair, lines[i]);
    }
    text = std::move(named);
  }
  return as_shown(text);
}

}  // namespace lab
