#include <fmt/chrono.h>

#include "output/events.h"
#include "output/json.h"

namespace lab {
namespace {

constexpr const char *event_names[] = {"compared", "changed", "disconnected", "connected",
                                       "error",    "note",    "summary"};

void add_outcome(const std::optional<Outcome> &outcome, Json &json) {
  json["agree"] = outcome ? Json(*outcome == Outcome::agree) : Json();
  json["verdict"] = outcome ? Json(outcome_name(outcome)) : Json();
}

// --- rows ---

Json value_to_json(const FieldValue &value) {
  if (const auto *text = std::get_if<std::string>(&value)) return printable(*text);
  return list_json(std::get<std::vector<std::string>>(value), printable);
}

// The fields of a row that differ from the other row; null if the row does not exist.
Json fields_to_json(const std::optional<Row> &row, const std::optional<Row> &other) {
  if (!row) return nullptr;
  Json fields = Json::object();
  for (const auto &[name, value] : *row) {
    const bool is_same = other && other->contains(name) && other->at(name) == value;
    if (!is_same) fields[printable(name)] = value_to_json(value);
  }
  return fields;
}

Json row_to_json(const RowChange &row) {
  return {{"side", switch_names[row.side]},
          {"row", printable(row.row)},
          {"before", fields_to_json(row.before, row.after)},
          {"after", fields_to_json(row.after, row.before)}};
}

// --- kinds ---

void add_comparison(const Event &event, Json &json) {
  json["notifications"] = sides_json([&](auto side) { return event.notifications[side]; });
  json["comparison"] = event.comparison ? comparison_to_json(*event.comparison) : Json();
}

void add_effect(const Event &event, Json &json) {
  json["checks"] = checks_to_json(event.effect.checks);
  add_outcome(event.outcome_before, json["before"]);
  for (const auto &[scope, agreed] : event.effect.agreed) json["before"]["scopes"][scope] = agreed;
  if (!event.effect.gone.empty()) json["gone"] = event.effect.gone;
}

// Lists the pairs that do not agree.
void add_summary(const FleetStatus &fleet, Json &json) {
  for (const auto &outcome : outcomes_by_urgency) {
    json["counts"][outcome_name(outcome)] = count_pairs(fleet, outcome);
  }
  Json &pairs = json["pairs"] = Json::array();
  for (const PairStatus &pair : fleet) {
    if (pair.outcome == Outcome::agree) continue;
    Json &listed = pairs.emplace_back();
    if (!pair.name.empty()) listed["pair"] = pair.name;
    add_outcome(pair.outcome, listed);
    listed["since"] =
        pair.changed == decltype(pair.changed){} ? Json() : Json(format_time(pair.changed));
    if (!pair.outcome) listed["problem"] = describe_unknown(pair);
  }
}

}  // namespace

std::string format_time(std::chrono::system_clock::time_point time) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(time);
  const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(time - whole).count();
  std::string text =
      fmt::format("{0:%Y-%m-%dT%H:%M:%S}.{1:03}{0:%z}",
                  fmt::localtime(std::chrono::system_clock::to_time_t(whole)), millis);
  return text.insert(text.size() - 2, ":");
}

std::string format_event(const Event &event) {
  using Kind = Event::Kind;
  const Kind kind = event.kind;
  Json json = {{"event", event_names[std::size_t(kind)]}, {"time", format_time(event.time)}};
  if (!event.pair.empty()) json["pair"] = event.pair;
  add_outcome(event.outcome, json);
  if (kind == Kind::connected || kind == Kind::disconnected || kind == Kind::error) {
    json["side"] = switch_names[event.side];
  }
  if (kind == Kind::compared || kind == Kind::connected) {
    add_comparison(event, json);
  } else if (kind == Kind::disconnected) {
    json.update({{"source", event.source}, {"reason", event.reason}});
  } else if (kind == Kind::note) {
    json["appeared"] = notes_to_json(event.appeared);
    json["gone"] = notes_to_json(event.gone_notes);
  } else if (kind == Kind::summary) {
    add_summary(event.fleet, json);
  } else {
    json["rows"] = list_json(event.rows, row_to_json);
  }
  if (kind == Kind::error) json["errors"] = errors_to_json({{event.source, event.errors}});
  if (kind == Kind::changed) add_effect(event, json);
  return format_json(json, JsonForm::line);
}

}  // namespace lab
