#include "sonic/database.h"

#include <algorithm>
#include <csignal>
#include <deque>
#include <set>
#include <utility>

#include "sonic/connection.h"
#include "sonic/resolver.h"
#include "text/text.h"
#include "text/wait.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// Between two readings of everything, where notifications come.
constexpr auto anew_after = 10s;
constexpr auto first_pause = 250ms;
constexpr auto longest_pause = 30s;
// Keys that the server looks at in one go, and rows that are asked for before the first is answered.
constexpr const char *keys_at_once = "5000";
constexpr std::size_t rows_at_once = 512;
// Where no notifications come, a reading that differs from the last may have met a change in the
// middle. It is done again, this often at most.
constexpr int most_repeats = 2;
// How often changes that come while changes are brought in are brought in, too.
constexpr int most_rounds = 3;

struct Reading {
  std::set<std::string> keys;
  std::deque<std::string> to_ask;
  std::size_t asked = 0;
  bool scanned = false;
  Rows rows;
  std::map<std::string, InputErrors> errors;
};

}  // namespace

struct Database {
  Source source;
  Clock::duration interval{};
  Snapshot snapshot;

  std::vector<std::string> addresses;  // that have not been tried yet
  std::unique_ptr<Resolver> resolver;
  TimePoint resolving_since;
  Connection rows;
  Connection changes;   // without a context: the server lets nobody subscribe
  bool silent = false;  // the server does not say whether it notifies

  std::optional<Reading> reading;
  bool read_once = false;
  int repeats = 0;
  TimePoint read_next;

  // Rows of which the server has said that they changed, and that are not asked for yet.
  std::set<std::string> changed;
  std::size_t settling = 0;  // answers that are awaited before the next round
  int rounds = 0;

  bool away = true;  // there are no connections; they are tried again
  Clock::duration pause{};
  TimePoint try_next;
};

namespace {

// --- the connections ---

std::string channel_of(const Database &database, const std::string &row) {
  return "__keyspace@" + std::to_string(database.source.database) + "__:" + row;
}

void open_connections(Database &database, TimePoint now) {
  const Source &source = database.source;
  std::string address;
  if (source.kind == Source::Kind::tcp) {
    address = database.addresses.front();
    database.addresses.erase(database.addresses.begin());
  }
  database.rows = connect_to(source, address);
  database.changes = connect_to(source, address);
  log_in(source, database.rows, now);
  say(database.rows, now, {Ask::select, ""}, {"SELECT", std::to_string(source.database)});
  log_in(source, database.changes, now);
  // One by one: before a login a server takes no more than a few words at once, and says nothing of a
  // password then.
  for (const std::string &table : tables_read()) {
    say(database.changes, now, {Ask::subscribe, ""},
        {"PSUBSCRIBE", channel_of(database, table + "|*")});
  }
}

void hear_resolver(Database &database, TimePoint now) {
  const std::optional<Resolved> resolved = hear(*database.resolver);
  if (resolved) {
    database.resolver.reset();
    if (!resolved->problem.empty()) throw ConnectionLost{resolved->problem};
    database.addresses = resolved->addresses;
  } else if (now - database.resolving_since >= redis_patience) {
    throw ConnectionLost{"the address of the host is not found in time"};
  }
}

void open(Database &database, TimePoint now) {
  database.away = false;
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
  database.settling = 0;
  database.rounds = 0;
}

// --- what is asked, and what is answered ---

void scan(Database &database, const std::string &cursor, TimePoint now) {
  say(database.rows, now, {Ask::scan, ""}, {"SCAN", cursor, "COUNT", keys_at_once});
}

void begin_reading(Database &database, TimePoint now) {
  database.reading.emplace();
  if (!database.silent) {
    say(database.rows, now, {Ask::config, ""}, {"CONFIG", "GET", "notify-keyspace-events"});
  }
  scan(database, "0", now);
}

void ask_rows(Database &database, TimePoint now) {
  Reading &reading = *database.reading;
  while (!reading.to_ask.empty() && reading.asked < rows_at_once) {
    say(database.rows, now, {Ask::row, reading.to_ask.front()},
        {"HGETALL", reading.to_ask.front()});
    reading.to_ask.pop_front();
    ++reading.asked;
  }
}

void take_config(Database &database, const redisReply &reply) {
  database.silent = reply.type == REDIS_REPLY_ERROR;
  const bool told = reply.type == REDIS_REPLY_ARRAY && reply.elements == 2;
  const std::string_view flags = told ? text_of(*reply.element[1]) : "";
  const auto has = [flags](char flag) { return flags.find(flag) != flags.npos; };
  database.snapshot.notifications =
      database.changes.context != nullptr && has('K') && (has('A') || (has('g') && has('h')));
}

void take_keys(Database &database, const redisReply &reply, TimePoint now) {
  Reading &reading = *database.reading;
  if (reply.type != REDIS_REPLY_ARRAY || reply.elements != 2 ||
      reply.element[1]->type != REDIS_REPLY_ARRAY) {
    throw ConnectionLost{garbled};
  }
  const redisReply &keys = *reply.element[1];
  for (std::size_t i = 0; i < keys.elements; ++i) {
    std::string key(text_of(*keys.element[i]));
    if (!tables_read().contains(split_row_name(key).first)) continue;
    if (reading.keys.insert(key).second) reading.to_ask.push_back(std::move(key));
  }
  const std::string cursor(text_of(*reply.element[0]));
  reading.scanned = cursor == "0";
  if (!reading.scanned) scan(database, cursor, now);
}

std::vector<std::string> members_of(const std::string &text) {
  std::vector<std::string> members;
  for (std::size_t at = 0; at <= text.size() && !text.empty();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    members.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return members;
}

struct ReadRow {
  std::optional<Row> row;
  InputErrors errors;
};

ReadRow row_of(const std::string &name, const redisReply &reply) {
  if (reply.type == REDIS_REPLY_ERROR) {  // the one that is left is a wrong type
    return {{}, {{0, 0, printable(name), "found a value of another type", "a hash"}}};
  }
  if (reply.type != REDIS_REPLY_ARRAY) throw ConnectionLost{garbled};
  if (reply.elements < 2) return {};
  ReadRow read{Row{}, {}};
  const std::string table = split_row_name(name).first;
  for (std::size_t i = 0; i + 1 < reply.elements; i += 2) {
    std::string field(text_of(*reply.element[i]));
    const std::string value(text_of(*reply.element[i + 1]));
    const bool is_list = field.ends_with('@');
    if (is_list) field.pop_back();
    if (field == "NULL" || !(is_read(table, field) || table == "STP_PORT")) continue;
    const bool is_new =
        read.row->try_emplace(field, is_list ? FieldValue(members_of(value)) : FieldValue(value))
            .second;
    if (!is_new) {
      read.errors.push_back(
          {0, 0, printable(name + " " + field), "found it as a list and as a text", "it once"});
    }
  }
  return read;
}

void keep(std::map<std::string, InputErrors> &errors, const std::string &name, InputErrors found) {
  if (found.empty()) {
    errors.erase(name);
  } else {
    errors[name] = std::move(found);
  }
}

// A row of a reading, or one that has changed; that stands in a reading that goes on, too.
void take_row(Database &database, const Asked &asked, const redisReply &reply, TimePoint now) {
  ReadRow read = row_of(asked.row, reply);
  if (asked.what == Ask::row) --database.reading->asked;
  if (database.reading) {
    keep(database.reading->errors, asked.row, read.errors);
    set_row(database.reading->rows, asked.row, read.row);
  }
  if (asked.what == Ask::row) return;
  keep(database.snapshot.errors, asked.row, std::move(read.errors));
  change_row(database.snapshot, asked.row, std::move(read.row));
  if (--database.settling == 0 && database.changes.context != nullptr) {
    // Whatever changed before these rows were read is said before this is answered.
    say(database.changes, now, {Ask::fence, ""}, {"PING"});
    database.settling = 1;
  }
}

void take_answer(Database &database, const redisReply &reply, TimePoint now) {
  const Asked asked = next_awaited(database.rows);
  const std::string error(reply.type == REDIS_REPLY_ERROR ? text_of(reply) : "");
  const bool is_row = asked.what == Ask::row || asked.what == Ask::changed_row;
  if (!error.empty() && !(is_row && error.starts_with("WRONGTYPE")) &&
      !(asked.what == Ask::config && !error.starts_with("LOADING"))) {
    refuse(asked, error);
  }
  if (asked.what == Ask::config) take_config(database, reply);
  if (asked.what == Ask::scan) take_keys(database, reply, now);
  if (is_row) take_row(database, asked, reply, now);
}

void take_notice(Database &database, const redisReply &reply, TimePoint now) {
  const bool is_list = reply.type == REDIS_REPLY_ARRAY && reply.elements > 0;
  const std::string_view kind = is_list ? text_of(*reply.element[0]) : "";
  if (kind == "pmessage" && reply.elements == 4) {
    const std::string_view channel = text_of(*reply.element[2]);
    database.changed.emplace(
        channel.substr(std::min(channel_of(database, "").size(), channel.size())));
    return notice_change(database.snapshot, now);
  }
  const Asked asked = next_awaited(database.changes);
  if (asked.what == Ask::fence) --database.settling;
  if (reply.type != REDIS_REPLY_ERROR) return;
  const std::string error(text_of(reply));
  if (asked.what != Ask::subscribe || !error.starts_with("NOPERM")) refuse(asked, error);
  database.changes = Connection{};
}

// --- a step ---

void end_reading(Database &database, TimePoint now) {
  Snapshot &snapshot = database.snapshot;
  Reading read = std::move(*database.reading);
  database.reading.reset();
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
  database.read_once = true;
  if (differs) notice_change(snapshot, now);
  const bool repeat = differs && !snapshot.notifications && database.repeats < most_repeats;
  database.repeats = repeat ? database.repeats + 1 : 0;
  database.read_next =
      repeat ? now : now + (snapshot.notifications ? anew_after : database.interval);
}

bool settle_changes(Database &database, TimePoint now) {
  if (database.settling > 0) return false;
  if (database.changed.empty() || database.rounds == most_rounds) {
    database.rounds = 0;
    return true;
  }
  ++database.rounds;
  database.settling = database.changed.size();
  for (const std::string &row : database.changed) {
    say(database.rows, now, {Ask::changed_row, row}, {"HGETALL", row});
  }
  database.changed.clear();
  return false;
}

void work(Database &database, TimePoint now) {
  if (database.away) {
    if (now < database.try_next) return;
    open(database, now);
  }
  if (database.resolver != nullptr) hear_resolver(database, now);
  if (database.resolver != nullptr) return;
  if (database.rows.context == nullptr) open_connections(database, now);
  move(database.rows, now, [&](const redisReply &reply) { take_answer(database, reply, now); });
  move(database.changes, now, [&](const redisReply &reply) { take_notice(database, reply, now); });

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
  look_after(database.rows, now);
  look_after(database.changes, now);
}

void close_after(Database &database, const ConnectionLost &lost, TimePoint now) {
  const bool elsewhere = !database.rows.connected && !database.addresses.empty();
  close_connections(database);
  if (elsewhere) return;  // at the host's next address
  database.away = true;
  database.pause = std::clamp<Clock::duration>(database.pause * 2, first_pause, longest_pause);
  database.try_next = now + database.pause;
  lose(database.snapshot, lost.reason, lost.refused);
}

}  // namespace

void CloseDatabase::operator()(Database *database) const {
  delete database;
}

OpenDatabase open_database(const Source &source, Clock::duration interval, TimePoint now) {
  std::signal(SIGPIPE, SIG_IGN);
  OpenDatabase database(new Database);
  database->source = source;
  database->interval = interval;
  database->try_next = now;
  return database;
}

Snapshot &snapshot(Database &database) {
  return database.snapshot;
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
  if (database.resolver != nullptr) return database.resolving_since + redis_patience;
  if (database.rows.context == nullptr) return TimePoint{};
  TimePoint first = database.read_once && !database.reading ? database.read_next : TimePoint::max();
  for (const Connection *connection : {&database.rows, &database.changes}) {
    if (connection->context != nullptr) first = std::min(first, due(*connection));
  }
  return first;
}

void add_sockets(const Database &database, std::vector<pollfd> &sockets) {
  if (database.resolver != nullptr)
    sockets.push_back({database.resolver->process.output, POLLIN, 0});
  for (const Connection *connection : {&database.rows, &database.changes}) {
    if (connection->context != nullptr) sockets.push_back(socket_of(*connection));
  }
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
    return settle_changes(database, now);
  } catch (const ConnectionLost &lost) {
    close_after(database, lost, now);
    return true;
  }
}

ReadDatabase read_database(const Source &source) {
  const OpenDatabase database = open_database(source, anew_after, Clock::now());
  while (database->snapshot.state == SourceState::opening) {
    step(*database, Clock::now());
    std::vector<pollfd> sockets;
    add_sockets(*database, sockets);
    if (database->snapshot.state == SourceState::opening) wait(sockets, due(*database));
  }
  ReadDatabase read{std::move(database->snapshot.rows), {}, std::move(database->snapshot.reason)};
  for (const auto &[row, errors] : database->snapshot.errors) {
    read.errors.insert(read.errors.end(), errors.begin(), errors.end());
  }
  return read;
}

}  // namespace lab
