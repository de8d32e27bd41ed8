// What the answers of a database server hold. Anything that no server would answer is a protocol
// error, thrown as ConnectionLost.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sonic/connection.h"
#include "sonic/rows.h"
#include "text/error.h"

namespace lab {

struct FoundKeys {
  std::string cursor;             // "0": these were the last
  bool has_keys = false;          // of any table
  std::vector<std::string> keys;  // of the tables that are read
};

// An answer to SCAN.
FoundKeys read_keys(const redisReply &reply, const ReadLimits &limits);

struct ReadRow {
  std::optional<Row> row;  // nothing: there is no such row
  InputErrors errors;
};

// An answer to HGETALL.
ReadRow read_row(const std::string &name, const redisReply &reply, const ReadLimits &limits);

// An answer to CONFIG GET notify-keyspace-events: does the server notify of all that happens to
// rows?
bool has_notifications(const redisReply &reply);

// The row that a notification names, nothing when it is an answer. `channel` is what every channel
// begins with.
std::optional<std::string> notified_row(const redisReply &reply, const std::string &channel,
                                        const ReadLimits &limits);

}  // namespace lab
