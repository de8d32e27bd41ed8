// A reading of the rows of a database, and what the answers of its server contain. An answer that
// no server would give is a protocol error, thrown as ConnectionError, as is one past a limit.
#pragma once

#include <deque>
#include <map>
#include <string>

#include "sonic/connection.h"
#include "sonic/rows.h"

namespace lab {

// Of all rows, or of those that changed, which then are brought into the others.
struct Reading {
  bool is_whole = true;
  Rows rows;  // one that has been found and is not read yet has no fields
  std::map<std::string, InputErrors> errors;  // as in a snapshot
  std::size_t memory = 0;                     // of the rows, roughly
  std::deque<std::string> to_ask;             // rows
  bool has_keys = false;                      // of any table
  std::size_t scans = 0;
  int64_t balance = 0;  // of the rows that came and went
};

// Bring some rows of a database in.
Reading start_partial_reading(Rows rows, std::map<std::string, InputErrors> errors,
                              const std::set<std::string> &changed);

// An answer to SCAN. Returns the cursor for the next one; "0": these were the last keys.
std::string take_keys(Reading &reading, const redisReply &reply, const ReadLimits &limits);

// An answer to HGETALL.
void take_row(Reading &reading, const std::string &name, const redisReply &reply,
              const ReadLimits &limits);

// An answer to CONFIG GET notify-keyspace-events: does the server notify of all that happens to
// rows?
bool has_notifications(const redisReply &reply);

// The row that a notification names, nothing when it is an answer. `channel` is what every channel
// begins with.
std::optional<std::string> notified_row(const redisReply &reply, const std::string &channel,
                                        const ReadLimits &limits);

}  // namespace lab
