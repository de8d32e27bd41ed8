#include "sonic/database.h"

#include <algorithm>
#include <csignal>
#include <random>
#include <utility>

#include "sonic/database_state.h"
#include "text/text.h"
#include "text/wait.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr auto first_pause = 250ms;
constexpr auto longest_pause = 5s;
constexpr auto longest_pause_of_refused = 30s;  // of a name that is not found, too
// Where no notifications come, a reading that differs from the last may have met a change in the
// middle. It is done again, this often at most.
constexpr int most_repeats = 2;
// How often changes that come while changes are brought in are brought in, too.
constexpr int most_rounds = 3;

// --- the connections ---

Connection connect(Database &database, std::size_t which, const std::string &address) {
  int &socket = database.sockets[which];
  if (socket < 0) return connect_to(database.source, address, database.limits);
  return adopt_socket(std::exchange(socket, -1), database.source.shown, database.limits);
}

void open_connections(Database &database, TimePoint now) {
  const Source &source = database.source;
  std::string address;
  if (source.kind == Source::Kind::tcp) {
    address = database.addresses.front();
    database.addresses.erase(database.addresses.begin());
  }
  database.rows = connect(database, 0, address);
  database.changes = connect(database, 1, address);
  log_in(source, database.rows, now);
  send_request(database.rows, now, {Ask::select, ""}, {"SELECT", std::to_string(source.database)});
  log_in(source, database.changes, now);
  // One by one: before a login a server takes no more than a few words at once, and says nothing of
  // a password then.
  for (const std::string &table : tables_read()) {
    send_request(database.changes, now, {Ask::subscribe, ""},
                 {"PSUBSCRIBE", channel_of(database, table + "|*")});
  }
}

void take_addresses(Database &database, TimePoint now) {
  const std::optional<Resolved> resolved = poll_resolver(*database.resolver);
  if (resolved) {
    database.resolver.reset();
    if (!resolved->problem.empty()) throw ConnectionLost{resolved->problem, false, true};
    database.addresses = resolved->addresses;
  } else if (now - database.resolving_since >= database.limits.answer_time) {
    throw ConnectionLost{"the address of the host is not found in time", false, true};
  }
}

void open(Database &database, TimePoint now) {
  database.away = false;
  database.deadline = now + database.limits.reading_time;
  database.addresses.clear();
  if (database.source.kind != Source::Kind::tcp) return;
  if (is_address(database.source.place)) {
    database.addresses = {database.source.place};
  } else {
    database.resolver = start_resolver(database.source.place);
    database.resolving_since = now;
  }
}

void close_connections(Database &database) {
  database.resolver.reset();
  database.rows = Connection{};
  database.changes = Connection{};
  database.reading.reset();
  database.silent = false;
  database.read_once = false;
  database.repeats = 0;
  database.changed.clear();
  database.has_missed = false;
  database.memory = 0;
  database.keys.reset();
  database.answers_size = true;
  database.settling = 0;
  database.rounds = 0;
}

// --- a step ---

void end_reading(Database &database, TimePoint now) {
  Snapshot &snapshot = database.snapshot;
  Reading read = std::move(*database.reading);
  database.reading.reset();
  if (!read.has_keys) {
    read.errors[""] = {{0, 0, "",
                        "database " + std::to_string(database.source.database) + " is empty",
                        "the configuration of a switch"}};
  }
  bool differs = !database.read_once || snapshot.errors != read.errors;
  if (!database.read_once) {
    snapshot.rows = std::move(read.rows);
  } else {
    for (const std::string &name : differing_rows(snapshot.rows, read.rows)) {
      if (database.changed.contains(name)) continue;
      const Row *row = find_row(read.rows, name);
      change_row(snapshot, name, row != nullptr ? std::optional<Row>(*row) : std::nullopt);
      differs = true;
    }
  }
  snapshot.errors = std::move(read.errors);
  snapshot.checked = now;
  database.memory = memory_of(snapshot.rows);
  database.read_once = true;
  database.keys.reset();
  if (differs) notice_change(snapshot, now);
  const bool repeat = differs && !snapshot.notifications && database.repeats < most_repeats;
  database.repeats = repeat ? database.repeats + 1 : 0;
  // Without its size, only a reading shows what nothing notifies of.
  const auto notified = database.answers_size
                            ? database.intervals.notified
                            : std::min<Clock::duration>(database.intervals.notified, 10s);
  const auto pause = snapshot.notifications ? notified : database.intervals.unnotified;
  database.read_next = repeat ? now : now + pause;
}

bool settle_changes(Database &database, TimePoint now) {
  if (database.settling > 0 || (database.reading && database.reading->is_settling)) return false;
  const bool is_done = database.changed.empty() && !database.has_missed;
  if (is_done || database.rounds == most_rounds) {
    database.rounds = 0;
    return true;
  }
  if (database.has_missed && database.reading) return false;  // which began before
  ++database.rounds;
  set_deadline(database, now);
  if (database.has_missed) {
    begin_reading(database, now);
    return false;
  }
  database.settling = database.changed.size();
  for (const std::string &row : database.changed) {
    send_request(database.rows, now, {Ask::changed_row, row}, {"HGETALL", row});
  }
  database.changed.clear();
  return false;
}

void check_deadline(Database &database, TimePoint now) {
  if (database.snapshot.state == SourceState::here && !database.reading && database.rounds == 0) {
    database.deadline.reset();
  } else if (database.deadline && now >= *database.deadline) {
    throw ConnectionLost{"the database is not read within " +
                         seconds_text(database.limits.reading_time)};
  }
}

// A database without traffic is asked for a sign of life. A flush or a swap, of which nothing
// notifies, shows in its size, mostly.
void look_for_life(Database &database, TimePoint now) {
  for (Connection *connection : {&database.rows, &database.changes}) {
    check_answer_time(*connection, now);
    const bool asks_size = connection == &database.rows && database.snapshot.notifications &&
                           database.answers_size && database.read_once;
    const bool has_size = !asks_size || database.keys;
    const auto pause = has_size ? database.intervals.sign_of_life : Clock::duration{};
    if (!is_quiet(*connection, now, pause)) continue;
    send_request(*connection, now, {asks_size ? Ask::size : Ask::sign_of_life, ""},
                 {asks_size ? "DBSIZE" : "PING"});
  }
}

void work(Database &database, TimePoint now) {
  if (database.away) {
    if (now < database.try_next) return;
    open(database, now);
  }
  if (database.resolver != nullptr) take_addresses(database, now);
  if (database.resolver != nullptr) return;
  if (database.rows.context == nullptr) open_connections(database, now);
  move(database.rows, [&](const redisReply &reply) { take_answer(database, reply, now); });
  move(database.changes, [&](const redisReply &reply) { take_notice(database, reply, now); });

  Snapshot &snapshot = database.snapshot;
  if (database.reading) {
    Reading &reading = *database.reading;
    ask_rows(database, now);
    if (reading.scanned && reading.to_ask.empty() && reading.asked == 0) {
      end_reading(database, now);
    }
  } else if (database.read_once
                 ? now >= database.read_next
                 : database.rows.awaited.empty() && database.changes.awaited.empty()) {
    begin_reading(database, now);
  }
  if (snapshot.state != SourceState::here && database.read_once && database.repeats == 0 &&
      settle_changes(database, now)) {
    snapshot.state = SourceState::here;
    snapshot.reason.clear();
    snapshot.before.clear();
    if (database.changed.empty()) snapshot.first_change.reset();
    database.pause = {};
  }
  check_deadline(database, now);
  look_for_life(database, now);
  flush(database.rows);
  flush(database.changes);
}

void close_after(Database &database, const ConnectionLost &lost, TimePoint now) {
  const bool elsewhere = !database.rows.connected && !database.addresses.empty();
  close_connections(database);
  if (elsewhere) return;  // at the host's next address
  database.away = true;
  database.pause = std::clamp<Clock::duration>(
      database.pause * 2, first_pause,
      lost.refused || lost.has_no_address ? longest_pause_of_refused : longest_pause);
  // Those who lost a server at one time do not come back at one time.
  static std::minstd_rand random(std::random_device{}());
  const double part = std::uniform_real_distribution(0.5, 1.0)(random);
  database.try_next = now + std::chrono::duration_cast<Clock::duration>(database.pause * part);
  lose(database.snapshot, lost.reason, lost.refused);
}

}  // namespace

void CloseDatabase::operator()(Database *database) const {
  delete database;
}

OpenDatabase open_database(const Source &source, const ReadIntervals &intervals, TimePoint now,
                           const ReadLimits &limits) {
  std::signal(SIGPIPE, SIG_IGN);
  OpenDatabase database(new Database);
  database->source = source;
  database->intervals = intervals;
  database->limits = limits;
  database->try_next = now;
  return database;
}

OpenDatabase adopt_database(const std::array<int, 2> &sockets, const ReadIntervals &intervals,
                            TimePoint now) {
  Source none;
  none.kind = Source::Kind::unix_socket;
  OpenDatabase database = open_database(none, intervals, now, {});
  database->sockets = sockets;
  return database;
}

Snapshot &snapshot(Database &database) {
  return database.snapshot;
}

void set_intervals(Database &database, const ReadIntervals &intervals) {
  database.intervals = intervals;
  database.read_next = std::min(database.read_next, Clock::now() + intervals.notified);
}

void step(Database &database, TimePoint now) {
  try {
    work(database, now);
  } catch (const ConnectionLost &lost) {
    close_after(database, lost, now);
  }
}

TimePoint due(const Database &database) {
  if (database.away) return database.try_next;
  if (database.resolver != nullptr) return database.resolving_since + database.limits.answer_time;
  if (database.rows.context == nullptr) return TimePoint{};
  TimePoint first = database.deadline.value_or(TimePoint::max());
  if (database.read_once && !database.reading) first = std::min(first, database.read_next);
  for (const Connection *connection : {&database.rows, &database.changes}) {
    if (connection->context == nullptr) continue;
    first = std::min(first, due(*connection, database.intervals.sign_of_life));
  }
  return first;
}

bool is_away(const Database &database) {
  return database.away;
}

std::array<AwaitedFile, 3> files_of(const Database &database) {
  std::array<AwaitedFile, 3> files;
  if (database.resolver != nullptr) files[0] = {database.resolver->process.output, POLLIN, 0};
  for (const auto &[connection, file] :
       {std::pair{&database.rows, &files[1]}, {&database.changes, &files[2]}}) {
    if (connection->context == nullptr) continue;
    const pollfd socket = socket_of(*connection);
    *file = {socket.fd, socket.events, connection->id};
  }
  return files;
}

bool settle(Database &database, TimePoint now) {
  Snapshot &snapshot = database.snapshot;
  if (snapshot.state != SourceState::here) return true;
  if (!snapshot.notifications && database.repeats > 0) return false;
  if (database.rounds == 0) {
    snapshot.first_change.reset();
    snapshot.last_change.reset();
  }
  try {
    const bool is_settled = settle_changes(database, now);
    flush(database.rows);
    return is_settled;
  } catch (const ConnectionLost &lost) {
    close_after(database, lost, now);
    return true;
  }
}

}  // namespace lab
