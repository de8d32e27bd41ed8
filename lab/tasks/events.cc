#include <algorithm>
#include <set>
#include <utility>

#include "tasks/pair_watch.h"

namespace lab {
namespace {

// --- rows ---

std::optional<Row> copy_row(const Row *row) {
  return row != nullptr ? std::optional<Row>(*row) : std::nullopt;
}

// Returns the changed rows, including rows that have become unreadable or readable.
std::vector<RowChange> find_changed_rows(PairWatch &watch, std::size_t side) {
  const SideState &last = watch.sides[side];
  const Snapshot &snapshot = snapshot_of(watch, side);
  std::vector<RowChange> rows;
  std::set<std::string> names;
  const auto add = [&](const std::string &name, std::optional<Row> before,
                       std::optional<Row> after) {
    names.insert(name);
    rows.push_back({.side = side,
                    .row = name.empty() ? watch.entry.sources[side].source.label : name,
                    .before = std::move(before),
                    .after = std::move(after)});
  };
  if (last.contents != snapshot.contents) {
    const bool was_state_file = last.contents != nullptr && !last.contents->has_rows;
    if (was_state_file || !snapshot.contents->has_rows) add("", {}, {});
    const Rows before = unpack(last.contents);
    const Rows after = unpack(snapshot.contents);
    if (snapshot.contents->has_rows) {
      for (const std::string &name : differing_rows(before, after)) {
        add(name, copy_row(find_row(before, name)), copy_row(find_row(after, name)));
      }
    }
  }
  for (const auto &[from, to] :
       {std::pair{&last.row_errors, &snapshot.errors}, {&snapshot.errors, &last.row_errors}}) {
    for (const auto &[name, errors] : *from) {
      // Row events carry more detail than one event for the source.
      const bool is_repeated = name.empty() ? !rows.empty() : names.contains(name);
      if (!to->contains(name) && !is_repeated) add(name, {}, {});
    }
  }
  return rows;
}

// --- checks ---

// Returns the differences between two comparisons.
ChangeEffect find_effect(const PairReport *before, const PairReport &after) {
  ChangeEffect effect;
  std::map<std::string, const ScopeReport *> old_scopes;
  if (before != nullptr) {
    for (const ScopeReport &scope : before->checks) old_scopes[scope.scope.name] = &scope;
  }
  for (const ScopeReport &scope : after.checks) {
    const auto old = old_scopes.extract(scope.scope.name);
    if (old && *old.mapped() == scope) continue;
    effect.checks.push_back(scope);
    if (old) effect.agreed[old.key()] = is_agreed(*old.mapped());
  }
  for (const auto &[scope, check] : old_scopes) effect.gone.push_back(scope);
  return effect;
}

// --- events ---

std::vector<Event> report_connections(PairWatch &watch, bool is_compared) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < watch.sides.size(); ++i) {
    if (!watch.sides[i].row_changes || !std::exchange(watch.sides[i].disconnected, false)) continue;
    events.push_back(make_event(Event::Kind::connected, watch));
    events.back().side = i;
  }
  if (is_compared && !watch.has_compared && events.empty()) {
    events.push_back(make_event(Event::Kind::compared, watch));
  }
  watch.has_compared = watch.has_compared || is_compared;
  for (Event &event : events) {
    event.notifications = {snapshot_of(watch, 0).notifications,
                           snapshot_of(watch, 1).notifications};
    if (is_compared) event.comparison = watch.comparison;
  }
  return events;
}

// Returns the warnings in `report` that are not in `other`.
std::vector<Note> find_new_warnings(const PairReport &report, const PairReport &other) {
  std::vector<Note> found;
  std::ranges::copy_if(report.notes, std::back_inserter(found), [&](const Note &note) {
    return is_warning(note) && std::ranges::count(other.notes, note) == 0;
  });
  return found;
}

void add_note_event(const PairReport &before, const PairWatch &watch, std::vector<Event> &events) {
  Event event = make_event(Event::Kind::note, watch);
  event.appeared = find_new_warnings(*watch.comparison, before);
  event.gone_notes = find_new_warnings(before, *watch.comparison);
  if (!event.appeared.empty() || !event.gone_notes.empty()) events.push_back(std::move(event));
}

// Sets the cause of an unknown verdict to the first side with errors.
void set_error_cause(PairWatch &watch) {
  for (std::size_t i = 0; i < watch.sides.size(); ++i) {
    if (watch.sides[i].errors.empty()) continue;
    watch.unknown = {.kind = UnknownCause::Kind::error,
                     .side = i,
                     .reason = "",
                     .error = watch.sides[i].errors.front()};
    return;
  }
}

}  // namespace

Event make_event(Event::Kind kind, const PairWatch &watch) {
  Event event;
  event.kind = kind;
  event.time = std::chrono::system_clock::now();
  event.outcome = watch.outcome;
  return event;
}

bool collect_row_changes(PairWatch &watch, std::size_t side) {
  SideState &last = watch.sides[side];
  const Snapshot &snapshot = snapshot_of(watch, side);
  last.row_changes.emplace();
  if (last.connected) last.row_changes = find_changed_rows(watch, side);
  const bool is_new =
      !last.connected || !last.row_changes->empty() || last.row_errors != snapshot.errors;
  last.contents = snapshot.contents;
  last.row_errors = snapshot.errors;
  return is_new;
}

std::vector<Event> report_disconnections(PairWatch &watch) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < watch.sides.size(); ++i) {
    const Snapshot &snapshot = snapshot_of(watch, i);
    if (snapshot.state != SourceState::disconnected) continue;
    // Reported once until the source is connected again.
    const bool is_reported = watch.sides[i].disconnected;
    watch.sides[i] = {.disconnected = true};
    watch.outcome.reset();
    watch.unknown = {.kind = UnknownCause::Kind::disconnected,
                     .side = i,
                     .reason = snapshot.reason,
                     .error = {}};
    if (is_reported) continue;
    Event event = make_event(Event::Kind::disconnected, watch);
    event.side = i;
    event.source = watch.entry.sources[i].source.label;
    event.reason = snapshot.reason;
    events.push_back(std::move(event));
  }
  return events;
}

std::vector<Event> report_changes(PairWatch &watch, CompareAnswer answer) {
  bool is_new = false;
  bool is_compared = answer.report.has_value();
  std::array<bool, 2> has_new_errors = {};
  for (std::size_t i = 0; i < watch.sides.size(); ++i) {
    SideState &side = watch.sides[i];
    is_compared = is_compared && side.row_changes;
    if (!side.row_changes) continue;
    const InputErrors before = std::exchange(side.errors, std::move(answer.sides[i].errors));
    has_new_errors[i] = !side.errors.empty() && side.errors != before;
    is_new = is_new || !side.connected || !side.row_changes->empty() || side.errors != before;
    side.connected = true;
  }
  if (!is_new) return {};

  set_error_cause(watch);
  const auto before = watch.comparison;
  const auto outcome_before = std::exchange(watch.outcome, std::nullopt);
  if (is_compared) {
    watch.comparison = std::make_shared<const PairReport>(std::move(*answer.report));
    watch.outcome = find_outcome(*watch.comparison);
    watch.unknown.reset();
  }
  std::vector<Event> events = report_connections(watch, is_compared);
  Event changed = make_event(Event::Kind::changed, watch);
  for (std::size_t i = 0; i < watch.sides.size(); ++i) {
    if (!watch.sides[i].row_changes) continue;
    std::vector<RowChange> &rows = *watch.sides[i].row_changes;
    if (!has_new_errors[i]) {
      std::move(rows.begin(), rows.end(), std::back_inserter(changed.rows));
      continue;
    }
    Event event = make_event(Event::Kind::error, watch);
    event.side = i;
    event.source = watch.entry.sources[i].source.label;
    event.rows = std::move(rows);
    event.errors = watch.sides[i].errors;
    events.push_back(std::move(event));
  }
  if (!changed.rows.empty()) {
    changed.outcome_before = outcome_before;
    if (is_compared) changed.effect = find_effect(before.get(), *watch.comparison);
    events.push_back(std::move(changed));
  }
  if (is_compared && before != nullptr) add_note_event(*before, watch, events);
  return events;
}

}  // namespace lab
