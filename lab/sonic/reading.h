// Reads rows of a database from the answers of its server. The functions throw ConnectionError for
// an answer that is invalid or exceeds a limit.
#pragma once

#include <deque>
#include <map>
#include <string>

#include "sonic/connection.h"
#include "sonic/rows.h"

namespace lab {

// A reading of all rows, or of changed rows, which are merged into the known ones.
struct Reading {
  bool is_whole = true;
  Rows rows;                                  // without fields until read
  std::map<std::string, InputErrors> errors;  // as in a snapshot
  std::size_t memory = 0;                     // of the rows, estimated
  std::deque<std::string> unrequested;        // rows
  bool has_keys = false;                      // in any table, read or ignored
  std::size_t scans = 0;
  int64_t row_delta = 0;  // rows added minus rows removed
};

// Starts a reading of the changed rows, given all known rows and their errors.
Reading start_partial_reading(Rows rows, std::map<std::string, InputErrors> errors,
                              const std::set<std::string> &changed);

// Parses an answer to SCAN. Returns the cursor for the next SCAN; "0" after the last.
std::string add_keys(Reading &reading, const redisReply &reply, const ReadLimits &limits);

// Parses an answer to HGETALL.
void add_row(Reading &reading, const std::string &name, const redisReply &reply,
             const ReadLimits &limits);

// Parses an answer to CONFIG GET notify-keyspace-events. Returns true if the server sends
// notifications of all changes of rows.
bool has_notifications(const redisReply &reply);

// Returns the row that a notification names, or nullopt for an answer to a request. `channel` is
// the common prefix of all channels.
std::optional<std::string> notified_row(const redisReply &reply, const std::string &channel,
                                        const ReadLimits &limits);

}  // namespace lab
