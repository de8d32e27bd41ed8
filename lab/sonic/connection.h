// A connection to a redis-server: requests are sent and answers come in their order, and nothing
// waits.
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

// What an answer is the answer to.
enum class Ask {
  login,
  select,
  subscribe,
  config,
  scan,
  row,
  size,
  sign_of_life,
  fence,
};

struct Asked {
  Ask what;
  std::string row;  // of Ask::row
};

struct Connection {
  std::unique_ptr<redisContext, FreeContext> context;
  uint64_t id = 0;    // of this context
  std::string place;  // "host:port" or a path
  ReadLimits limits;
  bool connected = false;
  bool writing = false;  // not all requests have left
  std::deque<Asked> awaited;
  TimePoint answered;  // when the last answer was complete, or the first one was asked for

  bool is_redis = false;  // an answer has been complete
  std::string first_bytes;
  std::size_t unfinished_bytes = 0;                 // of the answer that is being read
  std::unique_ptr<std::size_t> elements_left = {};  // that it may have
};

// Why a source is lost; thrown by all that follows.
struct ConnectionError {
  std::string reason;
  bool refused = false;  // it is of no use to try again
  bool has_no_address = false;
};

// The server has sent what no server sends.
[[noreturn]] void refuse_answer(const std::string &what);

// --- the addresses of a host ---

struct Resolved {
  std::vector<std::string> addresses;
  std::string problem;  // not empty: there are none
};

// Finds them without waiting: in a thread of its own, for that may take long.
struct Resolver {
  std::future<Resolved> result;
  Descriptor ready;  // to be read when the result is there
  TimePoint due;     // when it is of no use any more
};

// Is it an address, and no name?
bool is_address(const std::string &host);

// Throws std::system_error.
Resolver start_resolver(const std::string &host, TimePoint due);

// --- requests and answers ---

// Begin to connect, to the address where the source is a host.
Connection connect_to(const Source &source, const std::string &address, const ReadLimits &limits);

void send_request(Connection &connection, TimePoint now, Ask what,
                  const std::vector<std::string> &words);
void log_in(const Source &source, Connection &connection, TimePoint now);

// What the answer that has come is the answer to.
Asked next_awaited(Connection &connection, TimePoint now);

// The source is lost for an error that the server answered.
[[noreturn]] void refuse(Ask what, std::string_view error, const ReadLimits &limits);

std::string_view text_of(const redisReply &reply);

// Read and write what can be without waiting. `take` may drop the connection.
void move(Connection &connection, const std::function<void(const redisReply &)> &take);

// Write what can be without waiting.
void flush(Connection &connection);

// Throws when an answer is not complete in time.
void check_answer_time(const Connection &connection, TimePoint now);

// Is nothing awaited, and has nothing come for so long?
bool is_quiet(const Connection &connection, TimePoint now, Clock::duration time);

TimePoint due(const Connection &connection, Clock::duration sign_of_life);
bool needs_writing(const Connection &connection);

}  // namespace lab
