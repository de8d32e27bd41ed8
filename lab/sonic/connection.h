// A connection to a redis-server: words are said and answers come in their order, and nothing waits.
#pragma once

#include <hiredis/hiredis.h>
#include <poll.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sonic/snapshot.h"
#include "sonic/source.h"

namespace lab {

// How long a server may say nothing when it is asked something.
inline constexpr std::chrono::seconds redis_patience{5};

struct FreeContext {
  void operator()(redisContext *context) const { redisFree(context); }
};

// What an answer is the answer to.
enum class Ask { login, select, subscribe, config, scan, row, changed_row, sign_of_life, fence };

struct Asked {
  Ask what;
  std::string row;
};

struct Connection {
  std::unique_ptr<redisContext, FreeContext> context;
  bool connected = false;
  bool writing = false;  // not all of what is said has left
  std::deque<Asked> awaited;
  TimePoint heard;  // when it last said something, or was asked something after a pause
};

// Why a source is lost; thrown by all that follows.
struct ConnectionLost {
  std::string reason;
  bool refused = false;  // it is of no use to try again
};

inline constexpr const char *garbled = "the server does not speak as it should";

// Begin to connect, to the address where the source is a host.
Connection connect_to(const Source &source, const std::string &address);

void say(Connection &connection, TimePoint now, Asked asked, const std::vector<std::string> &words);
void log_in(const Source &source, Connection &connection, TimePoint now);

// What the next answer is the answer to.
Asked next_awaited(Connection &connection);

// The source is lost for an error that the server answered.
[[noreturn]] void refuse(const Asked &asked, const std::string &error);

std::string_view text_of(const redisReply &reply);

// Read and write what can be without waiting. `take` may drop the connection.
void move(Connection &connection, TimePoint now,
          const std::function<void(const redisReply &)> &take);

// Does it live? Call it after every move, and when it is due.
void look_after(Connection &connection, TimePoint now);
TimePoint due(const Connection &connection);
pollfd socket_of(const Connection &connection);

}  // namespace lab
