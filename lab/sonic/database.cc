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

constexpr auto first_pause = 250ms;
constexpr auto longest_pause = 5s;
constexpr auto longest_pause_of_refused = 30s;  // also if the host name has no address
// Without notifications, a reading that differs from the last may mix rows from before and after a
// change. It is repeated at most this often.
constexpr int most_repeats = 2;
// Partial readings before the snapshot counts as settled although more rows have changed.
constexpr int most_rounds = 3;
// COUNT of SCAN, and outstanding requests for rows.
constexpr const char *keys_at_once = "5000";
constexpr std::size_t rows_at_once = 512;

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
  send_request(database.rows, now, Ask::select, {"SELECT", std::to_string(source.database)});
  log_in(source, database.changes, now);
  // One request per table: without a login, a server that requires one limits the number of
  // arguments, and a larger request gets a protocol error instead of NOAUTH.
  for (const std::string &table : tables_read()) {
    send_request(database.changes, now, Ask::subscribe,
                 {"PSUBSCRIBE", channel_of(database, table + "|*")});
  }
}

void open(Database &database, TimePoint now) {
  database.away = false;
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

void take_addresses(Database &database, TimePoint now) {
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
  const bool elsewhere = !database.rows.connected && !database.addresses.empty();
  static_cast<DatabaseSession &>(database) = {};
  if (elsewhere) return;  // try the next address at once
  database.away = true;
  database.pause = std::clamp<Clock::duration>(
      database.pause * 2, first_pause,
      error.refused || error.has_no_address ? longest_pause_of_refused : longest_pause);
  // Random, so that clients that lost the server together do not reconnect together.
  static std::minstd_rand random(std::random_device{}());
  const double part = std::uniform_real_distribution(0.5, 1.0)(random);
  database.try_next = now + std::chrono::duration_cast<Clock::duration>(database.pause * part);
  mark_disconnected(database.snapshot, error.reason, error.refused);
}

// --- readings ---

void scan(Database &database, const std::string &cursor, TimePoint now) {
  send_request(database.rows, now, Ask::scan, {"SCAN", cursor, "COUNT", keys_at_once});
}

void ask_rows(Database &database, TimePoint now) {
  std::deque<std::string> &to_ask = database.reading->to_ask;
  while (!to_ask.empty() && database.rows.awaited.size() < rows_at_once) {
    send_request(database.rows, now, Ask::row, {"HGETALL", to_ask.front()});
    to_ask.pop_front();
  }
}

void begin_reading(Database &database, TimePoint now, bool is_whole) {
  if (!database.deadline) database.deadline = now + database.limits.reading_time;
  if (!is_whole) {
    database.reading =
        start_partial_reading(unpack(database.snapshot.contents), database.snapshot.errors,
                              std::exchange(database.changed, {}));
    return ask_rows(database, now);
  }
  database.reading.emplace();
  if (!database.silent) {
    send_request(database.rows, now, Ask::config, {"CONFIG", "GET", "notify-keyspace-events"});
  }
  scan(database, "0", now);
}

// Returns true if the rows or their errors changed.
bool keep_rows(Database &database, Reading &read) {
  const bool has_new_errors = database.snapshot.errors != read.errors;
  database.snapshot.errors = std::move(read.errors);
  return set_contents(database.snapshot, pack(read.rows)) || has_new_errors;
}

void end_partial_reading(Database &database, Reading read, TimePoint now) {
  keep_rows(database, read);
  if (database.keys) *database.keys += read.balance;
  if (database.changes.context == nullptr) return;
  // The answer follows the notifications of all changes made before these rows were read.
  send_request(database.changes, now, Ask::fence, {"PING"});
  database.is_fenced = true;
}

void end_whole_reading(Database &database, Reading read, TimePoint now) {
  if (!read.has_keys) {
    read.errors[""] = {{0, 0, "", fmt::format("database {} is empty", database.source.database),
                        "the configuration of a switch"}};
  }
  const bool differs = keep_rows(database, read);
  Snapshot &snapshot = database.snapshot;
  snapshot.checked = now;
  database.keys.reset();
  if (differs) notice_change(snapshot, now);
  const bool repeat = differs && !snapshot.notifications && database.repeats < most_repeats;
  database.repeats = repeat ? database.repeats + 1 : 0;
  // Without DBSIZE, only a reading detects changes without notifications.
  const auto notified = database.answers_size
                            ? database.intervals.notified
                            : std::min<Clock::duration>(database.intervals.notified, 10s);
  const auto pause = snapshot.notifications ? notified : database.intervals.unnotified;
  database.read_next = repeat ? now : now + pause;
}

bool settle_changes(Database &database, TimePoint now) {
  if (database.reading || database.is_fenced) return false;
  if (database.changed.empty() || database.rounds == most_rounds) {
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
void take_size(Database &database, const redisReply &reply, TimePoint now) {
  database.answers_size = reply.type != REDIS_REPLY_ERROR;  // an ACL may forbid DBSIZE
  if (!database.answers_size) return;
  if (reply.type != REDIS_REPLY_INTEGER) refuse_answer("an answer to DBSIZE that is not a number");
  if (!database.keys) {
    database.keys = reply.integer;
  } else if (!database.changed.empty() || database.is_fenced || database.reading) {
    return;  // requested again at the next sign of life
  } else if (*database.keys != reply.integer) {
    database.read_next = now;
  } else {
    database.snapshot.checked = now;
  }
}

void take_answer(Database &database, const redisReply &reply, TimePoint now) {
  const Asked asked = next_awaited(database.rows, now);
  const std::string_view error = text_of(reply);
  const bool says_something =
      asked.what == Ask::row
          ? error.starts_with("WRONGTYPE")
          : (asked.what == Ask::config || asked.what == Ask::size) && !error.starts_with("LOADING");
  const bool is_error = reply.type == REDIS_REPLY_ERROR;
  if (is_error && !says_something) refuse(asked.what, error, database.limits);
  if (asked.what == Ask::config) {
    database.silent = is_error;
    database.snapshot.notifications =
        database.changes.context != nullptr && has_notifications(reply);
  }
  if (asked.what == Ask::scan) {
    const std::string cursor = take_keys(*database.reading, reply, database.limits);
    if (cursor != "0") scan(database, cursor, now);
  }
  if (asked.what == Ask::size) take_size(database, reply, now);
  if (asked.what == Ask::row) take_row(*database.reading, asked.row, reply, database.limits);
}

void take_notice(Database &database, const redisReply &reply, TimePoint now) {
  if (const auto row = notified_row(reply, channel_of(database, ""), database.limits)) {
    notice_change(database.snapshot, now);
    if (database.changed.size() <= database.limits.changed_rows) database.changed.insert(*row);
    return;
  }
  const Asked asked = next_awaited(database.changes, now);
  if (asked.what == Ask::fence) database.is_fenced = false;
  if (reply.type != REDIS_REPLY_ERROR) return;
  const bool may_not = asked.what == Ask::subscribe && text_of(reply).starts_with("NOPERM");
  if (!may_not) refuse(asked.what, text_of(reply), database.limits);
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
void look_for_life(Database &database, TimePoint now) {
  for (Connection *connection : {&database.rows, &database.changes}) {
    check_answer_time(*connection, now);
    const bool asks_size = connection == &database.rows && database.snapshot.notifications &&
                           database.answers_size && database.snapshot.contents != nullptr;
    const bool has_size = !asks_size || database.keys;
    const auto pause = has_size ? database.intervals.sign_of_life : Clock::duration{};
    if (!is_quiet(*connection, now, pause)) continue;
    send_request(*connection, now, asks_size ? Ask::size : Ask::sign_of_life,
                 {asks_size ? "DBSIZE" : "PING"});
  }
}

// Begins, continues or ends a reading.
void continue_reading(Database &database, TimePoint now) {
  const bool has_read = database.snapshot.contents != nullptr;
  if (database.reading) {
    ask_rows(database, now);
    if (!database.rows.awaited.empty()) return;
    Reading ended = std::move(*database.reading);
    database.reading.reset();
    const auto end = ended.is_whole ? end_whole_reading : end_partial_reading;
    end(database, std::move(ended), now);
  } else if (has_read ? now >= database.read_next
                      : database.rows.awaited.empty() && database.changes.awaited.empty()) {
    begin_reading(database, now, true);
  }
}

void work(Database &database, TimePoint now) {
  if (database.away) {
    if (now < database.try_next) return;
    open(database, now);
  }
  if (database.resolver) take_addresses(database, now);
  if (database.resolver) return;
  if (database.rows.context == nullptr) open_connections(database, now);
  move(database.rows, [&](const redisReply &reply) { take_answer(database, reply, now); });
  move(database.changes, [&](const redisReply &reply) { take_notice(database, reply, now); });
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
  look_for_life(database, now);
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
  database.try_next = now;
  return database;
}

void step(Database &database, TimePoint now) {
  try {
    work(database, now);
  } catch (const ConnectionError &error) {
    close_after(database, error, now);
  }
}

TimePoint due(const Database &database) {
  if (database.away) return database.try_next;
  if (database.resolver) return database.resolver->due;
  if (database.rows.context == nullptr) return TimePoint{};
  TimePoint first = database.deadline.value_or(TimePoint::max());
  if (database.snapshot.contents && !database.reading) first = std::min(first, database.read_next);
  for (const Connection *connection : {&database.rows, &database.changes}) {
    if (connection->context == nullptr) continue;
    first = std::min(first, due(*connection, database.intervals.sign_of_life));
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
