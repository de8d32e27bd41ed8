#include <utility>

#include "sonic/database_state.h"

namespace lab {
namespace {

// Keys that the server looks at in one go, and rows that are asked for before the first is
// answered.
constexpr const char *keys_at_once = "5000";
constexpr std::size_t rows_at_once = 512;

void scan(Database &database, const std::string &cursor, TimePoint now) {
  send_request(database.rows, now, {Ask::scan, ""}, {"SCAN", cursor, "COUNT", keys_at_once});
}

void take_config(Database &database, const redisReply &reply) {
  database.silent = reply.type == REDIS_REPLY_ERROR;
  database.snapshot.notifications = database.changes.context != nullptr && has_notifications(reply);
}

void take_keys(Database &database, const redisReply &reply, TimePoint now) {
  FoundKeys found = read_keys(reply, database.limits);
  const std::string cursor = found.cursor;
  add_keys(*database.reading, std::move(found), database.limits);
  if (!database.reading->scanned) scan(database, cursor, now);
}

// A row of a reading, or one that has changed; that stands in a reading that goes on, too.
void take_row(Database &database, const Asked &asked, const redisReply &reply, TimePoint now) {
  const ReadLimits &limits = database.limits;
  ReadRow read = read_row(asked.row, reply, limits);
  if (asked.what == Ask::row) --database.reading->asked;
  if (database.reading) {
    Reading &reading = *database.reading;
    keep_errors(reading.errors, asked.row, read.errors, limits);
    count_memory(reading.memory, reading.rows, asked.row, read.row, limits);
    set_row(reading.rows, asked.row, read.row);
  }
  if (asked.what == Ask::row) return;
  keep_errors(database.snapshot.errors, asked.row, std::move(read.errors), limits);
  count_memory(database.memory, database.snapshot.rows, asked.row, read.row, limits);
  if (read.row) database.snapshot.errors.erase("");  // no longer empty
  const bool was_there = find_row(database.snapshot.rows, asked.row) != nullptr;
  if (database.keys) *database.keys += int{read.row.has_value()} - int{was_there};
  change_row(database.snapshot, asked.row, std::move(read.row));
  if (--database.settling == 0 && database.changes.context != nullptr) {
    // Whatever changed before these rows were read is notified before this is answered.
    send_request(database.changes, now, {Ask::fence, ""}, {"PING"});
    database.settling = 1;
  }
}

// All rows are read again where keys came or went without a notification.
void take_size(Database &database, const redisReply &reply, TimePoint now) {
  if (reply.type == REDIS_REPLY_ERROR) {  // it is not allowed, mostly
    database.answers_size = false;
    return;
  }
  if (reply.type != REDIS_REPLY_INTEGER) {
    refuse_answer("an answer to DBSIZE that is not a number");
  }
  const bool is_settled = database.changed.empty() && database.settling == 0 && !database.reading;
  if (!database.keys) {
    database.keys = reply.integer;
  } else if (!is_settled) {
    return;  // it is asked for again soon
  } else if (*database.keys != reply.integer) {
    database.read_next = now;
  } else {
    database.snapshot.checked = now;
  }
}

void note_changed(Database &database, std::string row, TimePoint now) {
  notice_change(database.snapshot, now);
  database.changed.insert(std::move(row));
  if (database.changed.size() <= database.limits.changed_rows) return;
  database.changed.clear();
  database.has_missed = true;
}

}  // namespace

std::string channel_of(const Database &database, const std::string &row) {
  return "__keyspace@" + std::to_string(database.source.database) + "__:" + row;
}

void set_deadline(Database &database, TimePoint now) {
  if (!database.deadline) database.deadline = now + database.limits.reading_time;
}

void begin_reading(Database &database, TimePoint now) {
  set_deadline(database, now);
  database.reading.emplace();
  if (std::exchange(database.has_missed, false)) {
    database.changed.clear();
    database.reading->is_settling = true;
  }
  if (!database.silent) {
    send_request(database.rows, now, {Ask::config, ""},
                 {"CONFIG", "GET", "notify-keyspace-events"});
  }
  scan(database, "0", now);
}

void ask_rows(Database &database, TimePoint now) {
  Reading &reading = *database.reading;
  while (!reading.to_ask.empty() && reading.asked < rows_at_once) {
    const std::string &name = *reading.to_ask.front();
    send_request(database.rows, now, {Ask::row, name}, {"HGETALL", name});
    reading.to_ask.pop_front();
    ++reading.asked;
  }
}

void take_answer(Database &database, const redisReply &reply, TimePoint now) {
  const Asked asked = next_awaited(database.rows, now);
  const std::string error(reply.type == REDIS_REPLY_ERROR ? text_of(reply) : "");
  const bool is_row = asked.what == Ask::row || asked.what == Ask::changed_row;
  if (!error.empty() && !(is_row && error.starts_with("WRONGTYPE")) &&
      !((asked.what == Ask::config || asked.what == Ask::size) && !error.starts_with("LOADING"))) {
    refuse(asked, error, database.limits);
  }
  if (asked.what == Ask::config) take_config(database, reply);
  if (asked.what == Ask::scan) take_keys(database, reply, now);
  if (asked.what == Ask::size) take_size(database, reply, now);
  if (is_row) take_row(database, asked, reply, now);
}

void take_notice(Database &database, const redisReply &reply, TimePoint now) {
  auto row = notified_row(reply, channel_of(database, ""), database.limits);
  if (row) return note_changed(database, std::move(*row), now);
  const Asked asked = next_awaited(database.changes, now);
  if (asked.what == Ask::fence) --database.settling;
  if (reply.type != REDIS_REPLY_ERROR) return;
  const std::string error(text_of(reply));
  if (asked.what != Ask::subscribe || !error.starts_with("NOPERM")) {
    refuse(asked, error, database.limits);
  }
  database.changes = Connection{};
}

}  // namespace lab
