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
  const auto &known = state.states[side].reading;
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

// --- the two sides ---

// The settings of a side from its snapshot; its errors.
InputErrors read_snapshot(Side &side, SideState &state, const Snapshot &snapshot) {
  InputErrors reading;
  for (const auto &[row, errors] : snapshot.errors) {
    reading.insert(reading.end(), errors.begin(), errors.end());
  }
  state.reading = snapshot.errors;
  if (snapshot.settings) {
    side.settings = *snapshot.settings;
    return reading;
  }
  // All that is wrong with a file, with its rows too, is known from its reading.
  if (snapshot.errors.contains("")) return reading;
  ReadSettings read = settings_of(snapshot.rows, reading);
  side.settings = std::move(read.settings);
  return std::move(read.errors);
}

// The comparison borrows the rows of the snapshots.
PairReport compare_snapshots(PairState &state, const SnapshotPair &snapshots) {
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    state.sides[i].rows.reset();
    if (!snapshots[i]->settings) state.sides[i].rows = std::move(snapshots[i]->rows);
  }
  PairReport report = compare(state.sides, state.options).report;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    if (state.sides[i].rows) snapshots[i]->rows = std::move(*state.sides[i].rows);
    state.sides[i].rows.reset();
  }
  return report;
}

// What is new on either side.
struct News {
  std::array<std::vector<RowChange>, 2> rows;
  std::array<bool, 2> has_connected = {};
  std::array<bool, 2> has_new_errors = {};

  bool is_empty() const {
    return rows[0].empty() && rows[1].empty() && !has_connected[0] && !has_connected[1] &&
           !has_new_errors[0] && !has_new_errors[1];
  }
};

News take_news(PairState &state, const SnapshotPair &snapshots) {
  News news;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    SideState &side = state.states[i];
    if (snapshots[i]->state != SourceState::here) continue;
    news.has_connected[i] = !side.connected;
    if (side.connected) news.rows[i] = find_changed_rows(state, i, *snapshots[i]);
    snapshots[i]->before.clear();
    if (side.connected && news.rows[i].empty() && side.reading == snapshots[i]->errors) continue;
    InputErrors errors = read_snapshot(state.sides[i], side, *snapshots[i]);
    side.connected = true;
    news.has_new_errors[i] = !errors.empty() && errors != side.errors;
    side.errors = std::move(errors);
  }
  return news;
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
                                      const News &news, bool is_compared) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    if (!news.has_connected[i] || !state.states[i].disconnected) continue;
    state.states[i].disconnected = false;
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

PairState make_pair_state(const std::array<std::string, 2> &sources,
                          const CompareOptions &options) {
  PairState state;
  state.options = options;
  for (std::size_t i = 0; i < sources.size(); ++i) state.sides[i].source = sources[i];
  return state;
}

std::vector<Event> report_disconnections(PairState &state, const SnapshotPair &snapshots) {
  std::vector<Event> events;
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    SideState &side = state.states[i];
    if (snapshots[i]->state != SourceState::lost || side.disconnected) continue;
    side = SideState{};
    side.disconnected = true;
    state.outcome.reset();
    Event event = make_event(Event::Kind::disconnected, state);
    event.side = i;
    event.source = state.sides[i].source;
    event.reason = snapshots[i]->reason;
    events.push_back(std::move(event));
  }
  return events;
}

std::vector<Event> report_changes(PairState &state, const SnapshotPair &snapshots) {
  News news = take_news(state, snapshots);
  if (news.is_empty()) return {};

  const auto before = state.comparison;
  const auto outcome_before = std::exchange(state.outcome, std::nullopt);
  const bool is_compared =
      std::all_of(state.states.begin(), state.states.end(),
                  [](const SideState &side) { return side.connected && side.errors.empty(); });
  if (is_compared) {
    state.comparison = std::make_shared<const PairReport>(compare_snapshots(state, snapshots));
    state.outcome = find_verdict(*state.comparison).outcome;
  }
  std::vector<Event> events = report_connections(state, snapshots, news, is_compared);
  Event changed = make_event(Event::Kind::changed, state);
  for (std::size_t i = 0; i < snapshots.size(); ++i) {
    std::vector<RowChange> &rows = news.rows[i];
    if (!news.has_new_errors[i]) {
      std::move(rows.begin(), rows.end(), std::back_inserter(changed.rows));
      continue;
    }
    Event event = make_event(Event::Kind::error, state);
    event.side = i;
    event.source = state.sides[i].source;
    event.rows = std::move(rows);
    event.errors = state.states[i].errors;
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
