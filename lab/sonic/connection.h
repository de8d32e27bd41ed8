// A nonblocking connection to a redis-server. Answers arrive in the order of the requests.
#pragma once

#include <hiredis/hiredis.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sonic/limits.h"
#include "sonic/snapshot.h"
#include "sonic/source.h"
#include "text/file.h"

namespace lab {

struct FreeContext {
  void operator()(redisContext *context) const { redisFree(context); }
};

enum class Query {
  login,
  select,
  subscribe,
  config,
  scan,
  row,
  size,
  ping,
  fence,
};

struct PendingQuery {
  Query kind;
  std::string row;  // of Ask::row
};

struct Connection {
  std::unique_ptr<redisContext, FreeContext> context;

  std::string place;  // "host:port" or a path
  ReadLimits limits;
  bool connected = false;
  bool is_writing = false;  // requests are buffered
  std::deque<PendingQuery> pending;
  TimePoint last_answer;  // the last complete answer, or the first request after a quiet time

  bool is_redis = false;  // at least one answer was complete
  std::string first_bytes;
  std::size_t unfinished_bytes = 0;                 // received of the current answer
  std::unique_ptr<std::size_t> elements_left = {};  // limit for the current answer
};

// Closes the connections of a source; thrown by the functions below.
struct ConnectionError {
  std::string reason;
  bool refused = false;  // access denied: retry less often
  bool has_no_address = false;
};

// Throws ConnectionError for an answer that violates the protocol.
[[noreturn]] void throw_protocol_error(const std::string &problem);

// --- host names ---

struct Resolved {
  std::vector<std::string> addresses;
  std::string problem;  // empty on success
};

// A lookup that runs in a thread of its own, because getaddrinfo() blocks.
struct Resolver {
  std::future<Resolved> result;
  Descriptor ready;  // readable when the result is available
  TimePoint due;     // deadline
};

// Returns true for a numeric address, false for a host name.
bool is_address(const std::string &host);

// Throws std::system_error if no pipe or thread can be created.
Resolver start_resolver(const std::string &host, TimePoint due);

// --- requests and answers ---

// Starts to connect to `address`, or to the path of a Unix socket.
Connection connect_to(const Source &source, const std::string &address, const ReadLimits &limits);

void send_request(Connection &connection, TimePoint now, Query kind,
                  const std::vector<std::string> &words);
void log_in(const Source &source, Connection &connection, TimePoint now);

// Removes and returns the request that the received answer belongs to.
PendingQuery take_query(Connection &connection, TimePoint now);

// Returns true if the connection can continue: a row has another type, or an ACL forbids a command
// that is optional.
bool is_expected_error(Query kind, std::string_view error);

// Throws ConnectionError for an error that the server answered.
[[noreturn]] void throw_server_error(Query kind, std::string_view error, const ReadLimits &limits);

std::string_view reply_text(const redisReply &reply);

// Reads and writes without blocking. `on_answer` may reset the connection.
void read_and_write(Connection &connection,
                    const std::function<void(const redisReply &)> &on_answer);

// Writes buffered requests without blocking.
void flush(Connection &connection);

// Throws ConnectionError if an answer is not complete in time.
void check_answer_time(const Connection &connection, TimePoint now);

// Returns true if no answer is awaited and the last one is at least `time` old.
bool is_quiet(const Connection &connection, TimePoint now, Clock::duration time);

TimePoint due(const Connection &connection, Clock::duration probe_interval);
bool needs_writing(const Connection &connection);

}  // namespace lab
