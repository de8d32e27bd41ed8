#include "sonic/database.h"

#include <fmt/core.h>

#include <algorithm>
#include <csignal>
#include <random>
#include <system_error>
#include <utility>

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr auto min_pause = 250ms;
constexpr auto max_pause = 5s;
constexpr auto max_pause_of_refused = 30s;  // also if the host name has no address
// Without notifications, a reading that differs from the last may mix rows from before and after a
// change. It is repeated at most this often.
constexpr int max_repeats = 2;
// Partial readings before the snapshot counts as settled although more rows have changed.
constexpr int max_rounds = 3;
// COUNT of SCAN, and outstanding requests for rows.
constexpr const char *scan_count = "5000";
constexpr std::size_t max_pending_rows = 512;

// --- connections ---

// Returns the notification channel of a row.
std::string channel_of(const Database &database, const std::string &row) {
  return fmt::format("__keyspace@{}__:{}", database.source.database, row);
}

void open_connections(Database &database, TimePoint now) {
  const Source &source = database.source;
  std::string address;
  if (source.kind == Source::Kind::tcp) {
    address = database.addresses.front();
    database.addresses.erase(database.addresses.begin());
  }
  database.rows = connect_to(source, address, database.limits);
  database.changes = connect_to(source, address, database.limits);
  log_in(source, database.rows, now);
  send_request(database.rows, now, Query::select, {"SELECT", std::to_string(source.database)});
  log_in(source, database.changes, now);
  // One request per table: without a login, a server that requires one limits the number of
  // arguments, and a larger request gets a protocol error instead of NOAUTH.
  for (const std::string &table : tables_read()) {
    send_request(database.changes, now, Query::subscribe,
                 {"PSUBSCRIBE", channel_of(database, table + "|*")});
  }
}

void start_connecting(Database &database, TimePoint now) {
  database.is_closed = false;
  database.deadline = now + database.limits.reading_time;
  database.addresses.clear();
  if (database.source.kind != Source::Kind::tcp) return;
  if (is_address(database.source.place)) {
    database.addresses = {database.source.place};
    return;
  }
  try {
    database.resolver = start_resolver(database.source.place, now + database.limits.answer_time);
  } catch (const std::system_error &problem) {
    throw ConnectionError{"cannot resolve the host: " + printable(problem.what()), false, true};
  }
}

void finish_resolving(Database &database, TimePoint now) {
  if (database.resolver->result.wait_for(0s) == std::future_status::ready) {
    const Resolved resolved = database.resolver->result.get();
    database.resolver.reset();
    if (!resolved.problem.empty()) throw ConnectionError{resolved.problem, false, true};
    database.addresses = resolved.addresses;
  } else if (now >= database.resolver->due) {
    throw ConnectionError{"the host was not resolved in time", false, true};
  }
}

void close_after(Database &database, const ConnectionError &error, TimePoint now) {
  const bool has_next_address = !database.rows.connected && !database.addresses.empty();
  static_cast<DatabaseSession &>(database) = {};
  if (has_next_address) return;  // try the next address at once
  database.is_closed = true;
  database.pause = std::clamp<Clock::duration>(
      database.pause * 2, min_pause,
      error.refused || error.has_no_address ? max_pause_of_refused : max_pause);
  // Random, so that clients that lost the server together do not reconnect together.
  static std::minstd_rand random(std::random_device{}());
  const double part = std::uniform_real_distribution(0.5, 1.0)(random);
  database.next_attempt = now + std::chrono::duration_cast<Clock::duration>(database.pause * part);
  mark_disconnected(database.snapshot, error.reason, error.refused);
}

// --- readings ---

void request_rows(Database &database, TimePoint now) {
  std::deque<std::string> &unrequested = database.reading->unrequested;
  while (!unrequested.empty() && database.rows.pending.size() < max_pending_rows) {
    send_request(database.rows, now, Query::row, {"HGETALL", unrequested.front()});
    unrequested.pop_front();
  }
}

void begin_reading(Database &database, TimePoint now, bool is_whole) {
  if (!database.deadline) database.deadline = now + database.limits.reading_time;
  if (!is_whole) {
    database.reading =
        start_partial_reading(unpack(database.snapshot.contents), database.snapshot.errors,
                              std::exchange(database.changed, {}));
    return request_rows(database, now);
  }
  database.reading.emplace();
  if (!database.refuses_config) {
    send_request(database.rows, now, Query::config, {"CONFIG", "GET", "notify-keyspace-events"});
  }
  send_request(database.rows, now, Query::scan, {"SCAN", "0", "COUNT", scan_count});
}

// Returns true if the rows or their errors changed.
bool store_rows(Database &database, Reading &read) {
  const bool has_new_errors = database.snapshot.errors != read.errors;
  database.snapshot.errors = std::move(read.errors);
  return set_contents(database.snapshot, pack(read.rows)) || has_new_errors;
}

void end_partial_reading(Database &database, Reading read, TimePoint now) {
  store_rows(database, read);
  if (database.keys) *database.keys += read.row_delta;
  if (database.changes.context == nullptr) return;
  // The answer follows the notifications of all changes made before these rows were read.
  send_request(database.changes, now, Query::fence, {"PING"});
  database.is_fenced = true;
}

void end_whole_reading(Database &database, Reading read, TimePoint now) {
  if (!read.has_keys) {
    read.errors[""] = {{0, 0, "", fmt::format("database {} is empty", database.source.database),
                        "the configuration of a switch"}};
  }
  const bool differs = store_rows(database, read);
  Snapshot &snapshot = database.snapshot;
  snapshot.checked = now;
  database.keys.reset();
  if (differs) record_change(snapshot, now);
  const bool repeat = differs && !snapshot.notifications && database.repeats < max_repeats;
  database.repeats = repeat ? database.repeats + 1 : 0;
  // Without DBSIZE, only a reading detects changes without notifications.
  const auto notified = database.answers_size
                            ? database.intervals.notified
                            : std::min<Clock::duration>(database.intervals.notified, 10s);
  const auto pause = snapshot.notifications ? notified : database.intervals.unnotified;
  database.next_reading = repeat ? now : now + pause;
}

bool settle_changes(Database &database, TimePoint now) {
  if (database.reading || database.is_fenced) return false;
  if (database.changed.empty() || database.rounds == max_rounds) {
    database.rounds = 0;
    return true;
  }
  ++database.rounds;
  const bool are_too_many = database.changed.size() > database.limits.changed_rows;
  if (are_too_many) database.changed.clear();
  begin_reading(database, now, are_too_many);
  return false;
}

// --- answers and notifications ---

// Schedules a reading of all rows if the number of keys changed without notifications.
void handle_size(Database &database, const redisReply &reply, TimePoint now) {
  database.answers_size = reply.type != REDIS_REPLY_ERROR;  // an ACL may forbid DBSIZE
  if (!database.answers_size) return;
  if (reply.type != REDIS_REPLY_INTEGER) throw_protocol_error("DBSIZE without a number");
  if (!database.keys) {
    database.keys = reply.integer;
  } else if (!database.changed.empty() || database.is_fenced || database.reading) {
    return;  // requested again at the next sign of life
  } else if (*database.keys != reply.integer) {
    database.next_reading = now;
  } else {
    database.snapshot.checked = now;
  }
}

void handle_reply(Database &database, const redisReply &reply, TimePoint now) {
  const auto [kind, row] = take_query(database.rows, now);
  if (reply.type == REDIS_REPLY_ERROR && !is_expected_error(kind, reply_text(reply))) {
    throw_server_error(kind, reply_text(reply), database.limits);
  }
  if (kind == Query::config) {
    database.refuses_config = reply.type == REDIS_REPLY_ERROR;
    database.snapshot.notifications =
        database.changes.context != nullptr && has_notifications(reply);
  } else if (kind == Query::scan) {
    const std::string cursor = add_keys(*database.reading, reply, database.limits);
    if (cursor == "0") return;
    send_request(database.rows, now, Query::scan, {"SCAN", cursor, "COUNT", scan_count});
  } else if (kind == Query::size) {
    handle_size(database, reply, now);
  } else if (kind == Query::row) {
    add_row(*database.reading, row, reply, database.limits);
  }
}

void handle_notification(Database &database, const redisReply &reply, TimePoint now) {
  if (const auto row = notified_row(reply, channel_of(database, ""), database.limits)) {
    record_change(database.snapshot, now);
    if (database.changed.size() <= database.limits.changed_rows) database.changed.insert(*row);
    return;
  }
  const PendingQuery query = take_query(database.changes, now);
  if (query.kind == Query::fence) database.is_fenced = false;
  if (reply.type != REDIS_REPLY_ERROR) return;
  const bool is_forbidden =
      query.kind == Query::subscribe && reply_text(reply).starts_with("NOPERM");
  if (!is_forbidden) throw_server_error(query.kind, reply_text(reply), database.limits);
  database.changes = Connection{};
}

// --- a step ---

void check_deadline(Database &database, TimePoint now) {
  if (database.snapshot.state == SourceState::connected && !database.reading &&
      database.rounds == 0) {
    database.deadline.reset();
  } else if (database.deadline && now >= *database.deadline) {
    throw ConnectionError{"the database was not read within " +
                          seconds_text(database.limits.reading_time)};
  }
}

// Sends a PING on a quiet connection, or DBSIZE, which detects most flushes and swaps.
void send_pings(Database &database, TimePoint now) {
  for (Connection *connection : {&database.rows, &database.changes}) {
    check_answer_time(*connection, now);
    const bool asks_size = connection == &database.rows && database.snapshot.notifications &&
                           database.answers_size && database.snapshot.contents != nullptr;
    const bool has_size = !asks_size || database.keys;
    const auto pause = has_size ? database.intervals.probe_interval : Clock::duration{};
    if (!is_quiet(*connection, now, pause)) continue;
    send_request(*connection, now, asks_size ? Query::size : Query::ping,
                 {asks_size ? "DBSIZE" : "PING"});
  }
}

// Begins, continues or ends a reading.
void continue_reading(Database &database, TimePoint now) {
  const bool has_read = database.snapshot.contents != nullptr;
  if (database.reading) {
    request_rows(database, now);
    if (!database.rows.pending.empty()) return;
    Reading ended = std::move(*database.reading);
    database.reading.reset();
    const auto end = ended.is_whole ? end_whole_reading : end_partial_reading;
    end(database, std::move(ended), now);
  } else if (has_read ? now >= database.next_reading
                      : database.rows.pending.empty() && database.changes.pending.empty()) {
    begin_reading(database, now, true);
  }
}

void run_session(Database &database, TimePoint now) {
  if (database.is_closed) {
    if (now < database.next_attempt) return;
    start_connecting(database, now);
  }
  if (database.resolver) finish_resolving(database, now);
  if (database.resolver) return;
  if (database.rows.context == nullptr) open_connections(database, now);
  read_and_write(database.rows,
                 [&](const redisReply &reply) { handle_reply(database, reply, now); });
  read_and_write(database.changes,
                 [&](const redisReply &reply) { handle_notification(database, reply, now); });
  continue_reading(database, now);
  Snapshot &snapshot = database.snapshot;
  if (snapshot.state != SourceState::connected && snapshot.contents != nullptr &&
      database.repeats == 0 && settle_changes(database, now)) {
    snapshot.state = SourceState::connected;
    snapshot.reason.clear();
    if (database.changed.empty()) snapshot.first_change.reset();
    database.pause = {};
  }
  check_deadline(database, now);
  send_pings(database, now);
  flush(database.rows);
  flush(database.changes);
}

}  // namespace

Database open_database(const Source &source, const ReadIntervals &intervals, TimePoint now,
                       const ReadLimits &limits) {
  std::signal(SIGPIPE, SIG_IGN);
  Database database;
  database.source = source;
  database.intervals = intervals;
  database.limits = limits;
  database.next_attempt = now;
  return database;
}

void step(Database &database, TimePoint now) {
  try {
    run_session(database, now);
  } catch (const ConnectionError &error) {
    close_after(database, error, now);
  }
}

TimePoint due(const Database &database) {
  if (database.is_closed) return database.next_attempt;
  if (database.resolver) return database.resolver->due;
  if (database.rows.context == nullptr) return TimePoint{};
  TimePoint first = database.deadline.value_or(TimePoint::max());
  if (database.snapshot.contents && !database.reading)
    first = std::min(first, database.next_reading);
  for (const Connection *connection : {&database.rows, &database.changes}) {
    if (connection->context == nullptr) continue;
    first = std::min(first, due(*connection, database.intervals.probe_interval));
  }
  return first;
}

bool settle(Database &database, TimePoint now) {
  Snapshot &snapshot = database.snapshot;
  if (snapshot.state != SourceState::connected) return true;
  if (!snapshot.notifications && database.repeats > 0) return false;
  if (database.rounds == 0) {
    snapshot.first_change.reset();
    snapshot.last_change.reset();
  }
  try {
    const bool is_settled = settle_changes(database, now);
    flush(database.rows);
    return is_settled;
  } catch (const ConnectionError &error) {
    close_after(database, error, now);
    return true;
  }
}

}  // namespace lab
