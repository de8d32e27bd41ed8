#include "tasks/events.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "output/told.h"
#include "switch/names.h"
#include "text/text.h"

namespace lab {
namespace {

// RFC 3339, local time with its offset.
std::string time_text() {
  const auto now = std::chrono::system_clock::now();
  const auto whole = std::chrono::floor<std::chrono::seconds>(now);
  const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now - whole).count();
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

Json event_of(const char *name, const Told &told) {
  Json event = {{"event", name}, {"time", time_text()}, {"agree", nullptr}};
  if (told.agree) event["agree"] = *told.agree;
  return event;
}

// --- rows ---

Json value_of(const FieldValue &value) {
  if (const auto *text = std::get_if<std::string>(&value)) return printable(*text);
  Json list = Json::array();
  for (const std::string &member : std::get<std::vector<std::string>>(value)) {
    list.push_back(printable(member));
  }
  return list;
}

// The fields of a row that are not the same in the other one; null when there is no such row.
Json fields_of(const Row *row, const Row *other) {
  if (row == nullptr) return nullptr;
  Json fields = Json::object();
  for (const auto &[name, value] : *row) {
    const bool is_same = other != nullptr && other->contains(name) && other->at(name) == value;
    if (!is_same) fields[printable(name)] = value_of(value);
  }
  return fields;
}

Json row_of(std::size_t side, const std::string &shown, const Row *before, const Row *after) {
  return {{"side", switch_names[side]},
          {"row", printable(shown)},
          {"before", fields_of(before, after)},
          {"after", fields_of(after, before)}};
}

// The rows that are not as they were, also when all that can be said of them is that they cannot be
// read, or could not.
Json changed_rows(const Told &told, std::size_t side, const Snapshot &snapshot) {
  Json rows = Json::array();
  for (const auto &[name, was] : snapshot.before) {
    const Row *before = was ? &*was : nullptr;
    const Row *after = find_row(snapshot.rows, name);
    const bool is_same =
        before != nullptr && after != nullptr ? *before == *after : before == after;
    if (name.empty() || !is_same) {
      rows.push_back(row_of(side, name.empty() ? told.sides[side].source : name, before, after));
    }
  }
  const auto &known = told.told[side].reading;
  for (const auto &[these, others] :
       {std::pair{&known, &snapshot.errors}, {&snapshot.errors, &known}}) {
    for (const auto &[name, errors] : *these) {
      if (others->contains(name) || snapshot.before.contains(name)) continue;
      if (name.empty() && !rows.empty()) continue;  // they say more than that the file is mended
      rows.push_back(row_of(side, name.empty() ? told.sides[side].source : name, nullptr, nullptr));
    }
  }
  return rows;
}

// --- the two sides ---

// The settings of a side, from what it holds now; its errors.
InputErrors settle_side(Side &side, SideTold &told, const Snapshot &snapshot) {
  InputErrors reading;
  for (const auto &[row, errors] : snapshot.errors) {
    reading.insert(reading.end(), errors.begin(), errors.end());
  }
  told.reading = snapshot.errors;
  if (snapshot.settings) {
    side.settings = *snapshot.settings;
    return reading;
  }
  // What is wrong with a file, with its rows too, is known from its reading.
  if (snapshot.errors.contains("")) return reading;
  ReadSettings read = settings_of(snapshot.rows, reading);
  side.settings = std::move(read.settings);
  return std::move(read.errors);
}

Json comparison_of(Told &told, const SnapshotPair &snapshot) {
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    told.sides[i].rows.reset();
    if (!snapshot[i]->settings) told.sides[i].rows = std::move(snapshot[i]->rows);
  }
  Json comparison = compare(told.sides);
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    if (told.sides[i].rows) snapshot[i]->rows = std::move(*told.sides[i].rows);
    told.sides[i].rows.reset();
  }
  return comparison;
}

bool can_be_compared(const Told &told) {
  return std::all_of(told.told.begin(), told.told.end(),
                     [](const SideTold &side) { return side.here && side.errors.empty(); });
}

// --- checks ---

std::map<std::string, const Json *> checks_by_scope(const Json &comparison) {
  std::map<std::string, const Json *> checks;
  if (comparison.is_null()) return checks;
  for (const Json &check : comparison["checks"]) {
    checks[check["scope"].get<std::string>()] = &check;
  }
  return checks;
}

// What a comparison says otherwise than the one before, and whether that agreed.
void add_checks(Json &event, const Json &before, const Json &after) {
  const auto known = checks_by_scope(before);
  const auto left = checks_by_scope(after);
  for (const Json &check : after["checks"]) {
    const auto found = known.find(check["scope"].get<std::string>());
    if (found != known.end() && *found->second == check) continue;
    event["checks"].push_back(check);
    if (found != known.end()) event["before"]["scopes"][found->first] = agrees(*found->second);
  }
  for (const auto &[scope, check] : known) {
    if (!left.contains(scope)) event["gone"].push_back(scope);
  }
}

}  // namespace

Told nothing_told(const std::array<std::string, 2> &sources) {
  Told told;
  for (std::size_t i = 0; i < sources.size(); ++i) told.sides[i].source = sources[i];
  return told;
}

std::vector<Json> tell_losses(Told &told, const SnapshotPair &snapshot) {
  std::vector<Json> events;
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    SideTold &side = told.told[i];
    if (snapshot[i]->state != SourceState::lost || side.lost) continue;
    side = SideTold{};
    side.lost = true;
    told.agree.reset();
    Json event = event_of("disconnected", told);
    event["side"] = switch_names[i];
    event["source"] = told.sides[i].source;
    event["reason"] = snapshot[i]->reason;
    events.push_back(std::move(event));
  }
  return events;
}

std::vector<Json> tell_changes(Told &told, const SnapshotPair &snapshot) {
  std::array<Json, 2> rows;
  std::array<bool, 2> arrived{};
  std::array<bool, 2> blamed{};
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    SideTold &side = told.told[i];
    rows[i] = Json::array();
    if (snapshot[i]->state != SourceState::here) continue;
    arrived[i] = !side.here;
    if (!arrived[i]) rows[i] = changed_rows(told, i, *snapshot[i]);
    snapshot[i]->before.clear();
    if (!arrived[i] && rows[i].empty() && side.reading == snapshot[i]->errors) continue;
    InputErrors errors = settle_side(told.sides[i], side, *snapshot[i]);
    side.here = true;
    blamed[i] = !errors.empty() && errors != side.errors;
    side.errors = std::move(errors);
  }
  const auto is_true = [](bool value) { return value; };
  const bool arrives = std::any_of(arrived.begin(), arrived.end(), is_true);
  const bool blames = std::any_of(blamed.begin(), blamed.end(), is_true);
  if (!arrives && !blames && rows[0].empty() && rows[1].empty()) return {};

  const Json before = std::move(told.comparison);
  const std::optional<bool> agreed = std::exchange(told.agree, std::nullopt);
  const bool compared = can_be_compared(told);
  told.comparison = compared ? comparison_of(told, snapshot) : before;
  if (compared) told.agree = told.comparison["agree"].get<bool>();

  std::vector<Json> events;
  const Json notifications = {{"left", snapshot[0]->notifications},
                              {"right", snapshot[1]->notifications}};
  const Json &now = compared ? told.comparison : Json();
  const bool is_first = compared && !told.started;
  told.started = told.started || compared;
  bool any_back = false;
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    if (!arrived[i] || !told.told[i].lost) continue;
    told.told[i].lost = false;
    any_back = true;
    Json event = event_of("connected", told);
    event["side"] = switch_names[i];
    event["notifications"] = notifications;
    event["comparison"] = now;
    events.push_back(std::move(event));
  }
  if (is_first && !any_back) {
    Json event = event_of("compared", told);
    event["notifications"] = notifications;
    event["comparison"] = now;
    events.push_back(std::move(event));
  }
  Json changed = Json::array();
  for (std::size_t i = 0; i < snapshot.size(); ++i) {
    if (!blamed[i]) {
      for (Json &row : rows[i]) changed.push_back(std::move(row));
      continue;
    }
    Json event = event_of("error", told);
    event["side"] = switch_names[i];
    event["rows"] = std::move(rows[i]);
    event["errors"] = errors_to_json(told.sides[i].source, told.told[i].errors);
    events.push_back(std::move(event));
  }
  if (!changed.empty()) {
    Json event = event_of("changed", told);
    event["rows"] = std::move(changed);
    event["checks"] = Json::array();
    event["before"]["agree"] = agreed ? Json(*agreed) : Json();
    if (compared) add_checks(event, before, told.comparison);
    events.push_back(std::move(event));
  }
  return events;
}

}  // namespace lab
