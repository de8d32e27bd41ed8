#include "tasks/events.h"

#include <algorithm>
#include <utility>

namespace lab {
namespace {

Event make_event(Event::Kind kind, const PairState &state) {
  Event event;
  event.kind = kind;
  event.time = std::chrono::system_clock::now();
  event.outcome = state.outcome;
  return event;
}

// --- rows ---

std::optional<Row> copy_row(const Row *row) {
  return row != nullptr ? std::optional<Row>(*row) : std::nullopt;
}

// The rows that are not as they were, also those of which all that is known is that they cannot be
// read, or could not.
std::vector<RowChange> find_changed_rows(const PairState &state, std::size_t side,
                                         const Snapshot &snapshot) {
  std::vector<RowChange> rows;
  const std::string &source = state.sides[side].source;
  for (const auto &[name, before] : snapshot.before) {
    std::optional<Row> after = copy_row(find_row(snapshot.rows, name));
    if (!name.empty() && before == after) continue;
    rows.push_back({.side = side,
                    .row = name.empty() ? source : name,
                    .before = before,
                    .after = std::move(after)});
  }
  const auto &known = state.sides[side].reading;
  for (const auto &[these, others] :
       {std::pair{&known, &snapshot.errors}, {&snapshot.errors, &known}}) {
    for (const auto &[name, errors] : *these) {
      if (others->contains(name) || snapshot.before.contains(name)) continue;
      if (name.empty() && !rows.empty()) continue;  // the rows say more than that it was repaired
      rows.push_back(
          {.side = side, .row = name.empty() ? source : name, .before = {}, .after = {}});
    }
  }
  return rows;
}

// --- checks ---

// What a comparison found that the one before did not.
ChangeEffect find_effect(const PairReport *before, const PairReport &after) {
  ChangeEffect effect;
  std::map<std::string, const ScopeReport *> known;
  for (std::size_t i = 0; before != nullptr && i < before->checks.size(); ++i) {
    known[before->checks[i].scope.name] = &before->checks[i];
  }
  for (const ScopeReport &scope : after.checks) {
    const auto found = known.find(scope.scope.name);
    if (found == known.end() || *found->second != scope) effect.checks.push_back(scope);
    if (found == known.end()) continue;
    if (*found->second != scope) {
      effect.agreed[found->first] = is_agreed(find_verdict(*found->second));
    }
    known.erase(found);
  }
  for (const auto &[scope, check] : known) effect.gone.push_back(scope);
  return effect;
}

// --- events ---

void set_comparison(Event &event, const PairState &state, const SnapshotPair &snapshots,
                    bool is_compared) {
  event.notifications = {snapshots[0]->notifications, snapshots[1]->notifications};
  if (is_compared) event.comparison = state.comparison;
}

std::vector<Event> report_connections(PairState &state, const SnapshotPair &snapshots,
                                      const PairNews &news, bool is_compared) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    if (!news[i] || !news[i]->has_connected || !state.sides[i].disconnected) continue;
    state.sides[i].disconnected = false;
    Event event = make_event(Event::Kind::connected, state);
    event.side = i;
    set_comparison(event, state, snapshots, is_compared);
    events.push_back(std::move(event));
  }
  if (is_compared && !state.started && events.empty()) {
    Event event = make_event(Event::Kind::compared, state);
    set_comparison(event, state, snapshots, is_compared);
    events.push_back(std::move(event));
  }
  state.started = state.started || is_compared;
  return events;
}

// The warnings of a report that another one has not.
std::vector<NoteReport> find_new_warnings(const PairReport &report, const PairReport &other) {
  std::vector<NoteReport> found;
  for (const NoteReport &note : report.notes) {
    if (is_warning(note) &&
        std::find(other.notes.begin(), other.notes.end(), note) == other.notes.end()) {
      found.push_back(note);
    }
  }
  return found;
}

void add_note_event(const PairReport &before, const PairState &state, std::vector<Event> &events) {
  Event event = make_event(Event::Kind::note, state);
  event.appeared = find_new_warnings(*state.comparison, before);
  event.gone_notes = find_new_warnings(before, *state.comparison);
  if (!event.appeared.empty() || !event.gone_notes.empty()) events.push_back(std::move(event));
}

}  // namespace

SideNews take_news(PairState &state, std::size_t side, Snapshot &snapshot) {
  SideState &known = state.sides[side];
  SideNews news{.has_connected = !known.connected,
                .has_new_reading = known.reading != snapshot.errors,
                .rows = {},
                .losses = known.losses};
  if (known.connected) news.rows = find_changed_rows(state, side, snapshot);
  snapshot.before.clear();
  known.reading = snapshot.errors;
  return news;
}

std::vector<Event> report_disconnections(PairState &state, const SnapshotPair &snapshots) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    SideState &side = state.sides[i];
    const bool is_lost = snapshots[i]->state == SourceState::lost;
    const bool was_lost = std::exchange(side.is_lost, is_lost);
    if (!is_lost || was_lost) continue;
    // A source that was not connected again in the meantime is reported once only.
    const bool is_reported = side.disconnected;
    side = {.source = side.source,
            .disconnected = true,
            .is_lost = true,
            .reading = {},
            .errors = {},
            .losses = side.losses + 1};
    state.outcome.reset();
    state.unknown = {.kind = UnknownCause::Kind::disconnected,
                     .side = i,
                     .reason = snapshots[i]->reason,
                     .error = {}};
    if (is_reported) continue;
    Event event = make_event(Event::Kind::disconnected, state);
    event.side = i;
    event.source = side.source;
    event.reason = snapshots[i]->reason;
    events.push_back(std::move(event));
  }
  return events;
}

std::vector<Event> report_changes(PairState &state, const SnapshotPair &snapshots, PairNews news,
                                  CompareAnswer answer) {
  bool is_new = false;
  bool is_compared = answer.comparison.has_value();
  for (std::size_t i = 0; i < news.size(); ++i) {
    SideState &side = state.sides[i];
    // The source may have been lost since.
    if (news[i] && news[i]->losses != side.losses) news[i].reset();
    is_compared = is_compared && news[i];
    if (!news[i]) continue;
    side.connected = true;
    news[i]->has_new_errors = !answer.errors[i].empty() && answer.errors[i] != side.errors;
    side.errors = std::move(answer.errors[i]);
    is_new = is_new || !news[i]->is_empty();
  }
  if (!is_new) return {};

  for (std::size_t i = news.size(); i-- > 0;) {
    if (state.sides[i].errors.empty()) continue;
    state.unknown = {.kind = UnknownCause::Kind::error,
                     .side = i,
                     .reason = "",
                     .error = state.sides[i].errors.front()};
  }
  const auto before = state.comparison;
  const auto outcome_before = std::exchange(state.outcome, std::nullopt);
  if (is_compared) {
    state.comparison = std::make_shared<const PairReport>(std::move(answer.comparison->report));
    state.outcome = find_verdict(*state.comparison).outcome;
    state.unknown.reset();
  }
  std::vector<Event> events = report_connections(state, snapshots, news, is_compared);
  Event changed = make_event(Event::Kind::changed, state);
  for (std::size_t i = 0; i < news.size(); ++i) {
    if (!news[i]) continue;
    std::vector<RowChange> &rows = news[i]->rows;
    if (!news[i]->has_new_errors) {
      std::move(rows.begin(), rows.end(), std::back_inserter(changed.rows));
      continue;
    }
    Event event = make_event(Event::Kind::error, state);
    event.side = i;
    event.source = state.sides[i].source;
    event.rows = std::move(rows);
    event.errors = state.sides[i].errors;
    events.push_back(std::move(event));
  }
  if (!changed.rows.empty()) {
    changed.outcome_before = outcome_before;
    if (is_compared) changed.effect = find_effect(before.get(), *state.comparison);
    events.push_back(std::move(changed));
  }
  if (is_compared && before != nullptr) add_note_event(*before, state, events);
  return events;
}

}  // namespace lab
