// What the files of the database reader share: its state, and what is asked and answered.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "sonic/connection.h"
#include "sonic/database.h"
#include "sonic/reading.h"
#include "sonic/resolver.h"

namespace lab {

struct Database {
  Source source;
  ReadIntervals intervals;
  ReadLimits limits;
  std::array<int, 2> sockets = {-1, -1};  // adopted ones, in place of a source
  Snapshot snapshot;
  std::size_t memory = 0;  // of its rows

  std::vector<std::string> addresses;  // that have not been tried yet
  std::unique_ptr<Resolver> resolver;
  TimePoint resolving_since;
  Connection rows;
  Connection changes;   // without a context: the server lets nobody subscribe
  bool silent = false;  // the server does not say whether it notifies

  // Keys of all tables, by DBSIZE, corrected by the rows that came and went since.
  std::optional<int64_t> keys;
  bool answers_size = true;

  std::optional<Reading> reading;
  bool read_once = false;
  int repeats = 0;
  TimePoint read_next;

  // Rows of which notifications have come, and that are not asked for yet.
  std::set<std::string> changed;
  bool has_missed = false;   // there were too many of them: all rows are to be read
  std::size_t settling = 0;  // answers that are awaited before the next round
  int rounds = 0;
  // Until all rows have been read, or those that changed have been brought in.
  std::optional<TimePoint> deadline;

  bool away = true;  // there are no connections; they are tried again
  Clock::duration pause{};
  TimePoint try_next;
};

// The channel of the notifications of a row.
std::string channel_of(const Database &database, const std::string &row);

void set_deadline(Database &database, TimePoint now);
void begin_reading(Database &database, TimePoint now);
void ask_rows(Database &database, TimePoint now);
void take_answer(Database &database, const redisReply &reply, TimePoint now);
void take_notice(Database &database, const redisReply &reply, TimePoint now);

}  // namespace lab
