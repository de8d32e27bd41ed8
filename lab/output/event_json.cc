#include "output/event_json.h"

#include <ctime>

#include "output/event_text.h"
#include "output/json.h"

namespace lab {
namespace {

constexpr const char *event_names[] = {"compared", "changed", "disconnected", "connected",
                                       "error",    "note",    "summary"};

void add_outcome(const std::optional<Outcome> &outcome, Json &json) {
  json["agree"] = outcome ? Json(*outcome == Outcome::agree) : Json();
  json["verdict"] = outcome ? Json(outcome_name(*outcome)) : Json();
}

Json notes_to_json(const std::vector<NoteReport> &notes) {
  Json list = Json::array();
  for (const NoteReport &note : notes) list.push_back(note_to_json(note, switch_names));
  return list;
}

// --- rows ---

Json value_to_json(const FieldValue &value) {
  if (const auto *text = std::get_if<std::string>(&value)) return printable(*text);
  Json list = Json::array();
  for (const std::string &member : std::get<std::vector<std::string>>(value)) {
    list.push_back(printable(member));
  }
  return list;
}

// The fields of a row that are not the same in the other one; null where there is no such row.
Json fields_to_json(const std::optional<Row> &row, const std::optional<Row> &other) {
  if (!row) return nullptr;
  Json fields = Json::object();
  for (const auto &[name, value] : *row) {
    const bool is_same = other && other->contains(name) && other->at(name) == value;
    if (!is_same) fields[printable(name)] = value_to_json(value);
  }
  return fields;
}

Json rows_to_json(const std::vector<RowChange> &rows) {
  Json list = Json::array();
  for (const RowChange &row : rows) {
    list.push_back({{"side", switch_names[row.side]},
                    {"row", printable(row.row)},
                    {"before", fields_to_json(row.before, row.after)},
                    {"after", fields_to_json(row.after, row.before)}});
  }
  return list;
}

// --- kinds ---

void add_comparison(const Event &event, Json &json) {
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    json["notifications"][switch_names[side]] = event.notifications[side];
  }
  json["comparison"] = event.comparison ? comparison_to_json(*event.comparison) : Json();
}

void add_effect(const Event &event, Json &json) {
  json["checks"] = checks_to_json(event.effect.checks);
  add_outcome(event.outcome_before, json["before"]);
  for (const auto &[scope, agreed] : event.effect.agreed) json["before"]["scopes"][scope] = agreed;
  if (!event.effect.gone.empty()) json["gone"] = event.effect.gone;
}

// The pairs that do not agree are listed.
void add_summary(const FleetStatus &fleet, Json &json) {
  Json counts = {{"agree", 0}, {"disagree", 0}, {"incomplete", 0}, {"unknown", 0}};
  Json pairs = Json::array();
  for (const PairStatus &pair : fleet) {
    const std::string verdict = pair.outcome ? outcome_name(*pair.outcome) : "unknown";
    counts[verdict] = counts[verdict].get<int>() + 1;
    if (pair.outcome == Outcome::agree) continue;
    Json &listed = pairs.emplace_back();
    if (!pair.name.empty()) listed["pair"] = pair.name;
    add_outcome(pair.outcome, listed);
    listed["since"] =
        pair.changed == decltype(pair.changed){} ? Json() : Json(format_time(pair.changed));
    if (!pair.outcome) listed["problem"] = describe_unknown(pair);
  }
  json["counts"] = std::move(counts);
  json["pairs"] = std::move(pairs);
}

}  // namespace

std::string format_time(std::chrono::system_clock::time_point time) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(time);
  const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(time - whole).count();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(whole);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  char date[32];
  char offset[8];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  std::strftime(offset, sizeof offset, "%z", &parts);
  const std::string fraction = std::to_string(1000 + millis).substr(1);
  return std::string(date) + "." + fraction + std::string(offset, 3) + ":" + (offset + 3);
}

std::string format_event(const Event &event) {
  Json json = {{"event", event_names[std::size_t(event.kind)]}, {"time", format_time(event.time)}};
  if (!event.pair.empty()) json["pair"] = event.pair;
  add_outcome(event.outcome, json);
  switch (event.kind) {
    case Event::Kind::compared:
      add_comparison(event, json);
      break;
    case Event::Kind::connected:
      json["side"] = switch_names[event.side];
      add_comparison(event, json);
      break;
    case Event::Kind::disconnected:
      json["side"] = switch_names[event.side];
      json["source"] = event.source;
      json["reason"] = event.reason;
      break;
    case Event::Kind::error:
      json["side"] = switch_names[event.side];
      json["rows"] = rows_to_json(event.rows);
      json["errors"] = errors_to_json({{event.source, event.errors}});
      break;
    case Event::Kind::note:
      json["appeared"] = notes_to_json(event.appeared);
      json["gone"] = notes_to_json(event.gone_notes);
      break;
    case Event::Kind::summary:
      add_summary(event.fleet, json);
      break;
    case Event::Kind::changed:
      json["rows"] = rows_to_json(event.rows);
      add_effect(event, json);
      break;
  }
  return format_json(json, JsonForm::line);
}

}  // namespace lab
