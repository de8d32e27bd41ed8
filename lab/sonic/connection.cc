#include "sonic/connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "text/text.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

// A connection on which nothing is said is asked for a sign of life.
constexpr auto beat = 1s;
// Reads of a socket before the other source has its turn.
constexpr int reads_at_once = 64;
// Elements of an answer.
constexpr int longest_list = 1000000;

struct FreeReply {
  void operator()(redisReply *reply) const { freeReplyObject(reply); }
};

using Reply = std::unique_ptr<redisReply, FreeReply>;

const redisReplyObjectFunctions *usual_functions = nullptr;

// A list of more than the lab can meet is not made, however long the server says that it is.
template <class Count>
void *make_list(const redisReadTask *task, Count elements) {
  return elements <= Count{longest_list} ? usual_functions->createArray(task, elements) : nullptr;
}

std::string error_of(const redisContext &context) {
  const bool is_cut = context.err == REDIS_ERR_IO && (errno == ECONNRESET || errno == EPIPE);
  if (context.err == REDIS_ERR_EOF || is_cut) return "the server closed the connection";
  if (context.err == REDIS_ERR_OOM) return "the server says more than can be kept";
  return printable(context.errstr);
}

void finish_connecting(Connection &connection) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(connection.context->fd, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) throw ConnectionLost{std::strerror(error)};
  connection.connected = true;
}

}  // namespace

Connection connect_to(const Source &source, const std::string &address) {
  Connection connection;
  connection.context.reset(source.kind == Source::Kind::unix_socket
                               ? redisConnectUnixNonBlock(source.place.c_str())
                               : redisConnectNonBlock(address.c_str(), source.port));
  if (connection.context == nullptr) throw ConnectionLost{"there is no memory for a connection"};
  if (connection.context->err != 0) throw ConnectionLost{error_of(*connection.context)};
  static redisReplyObjectFunctions functions;
  usual_functions = std::exchange(connection.context->reader->fn, &functions);
  functions = *usual_functions;
  functions.createArray = make_list;
  return connection;
}

void say(Connection &connection, TimePoint now, Asked asked,
         const std::vector<std::string> &words) {
  std::vector<const char *> texts;
  std::vector<std::size_t> lengths;
  for (const std::string &word : words) {
    texts.push_back(word.data());
    lengths.push_back(word.size());
  }
  if (redisAppendCommandArgv(connection.context.get(), static_cast<int>(words.size()), texts.data(),
                             lengths.data()) != REDIS_OK) {
    throw ConnectionLost{error_of(*connection.context)};
  }
  if (connection.awaited.empty()) connection.heard = now;
  connection.writing = true;
  connection.awaited.push_back(std::move(asked));
}

void log_in(const Source &source, Connection &connection, TimePoint now) {
  if (source.user.empty() && source.password.empty()) return;
  std::vector<std::string> words = {"AUTH"};
  if (!source.user.empty()) words.push_back(source.user);
  words.push_back(source.password);
  say(connection, now, {Ask::login, ""}, words);
}

Asked next_awaited(Connection &connection) {
  if (connection.awaited.empty()) throw ConnectionLost{garbled};
  Asked asked = std::move(connection.awaited.front());
  connection.awaited.pop_front();
  return asked;
}

void refuse(const Asked &asked, const std::string &error) {
  const auto begins = [&error](const char *word) { return error.starts_with(word); };
  if (begins("LOADING")) throw ConnectionLost{"the server is loading its data"};
  if (begins("NOAUTH")) throw ConnectionLost{"the server asks for a password", true};
  if (begins("NOPERM")) throw ConnectionLost{printable(error), true};
  // An answer to a login may repeat the password.
  if (asked.what == Ask::login && !begins("ERR max number of clients") && !begins("DENIED")) {
    throw ConnectionLost{"the password is refused", true};
  }
  // A database that the server does not have will not come.
  throw ConnectionLost{printable(error.substr(0, error.find(". "))), asked.what == Ask::select};
}

std::string_view text_of(const redisReply &reply) {
  return reply.str != nullptr ? std::string_view(reply.str, reply.len) : std::string_view();
}

pollfd socket_of(const Connection &connection) {
  const bool writing = connection.writing || !connection.connected;
  return {connection.context->fd, static_cast<int16_t>(writing ? POLLIN | POLLOUT : POLLIN), 0};
}

void move(Connection &connection, TimePoint now,
          const std::function<void(const redisReply &)> &take) {
  for (int i = 0; i < reads_at_once && connection.context != nullptr; ++i) {
    redisContext *context = connection.context.get();
    pollfd ready = socket_of(connection);
    if (poll(&ready, 1, 0) <= 0) return;
    if (!connection.connected) finish_connecting(connection);
    if ((ready.revents & ~POLLOUT) != 0) {
      if (redisBufferRead(context) != REDIS_OK) throw ConnectionLost{error_of(*context)};
      connection.heard = now;
    }
    void *reply = nullptr;
    do {
      if (redisGetReplyFromReader(context, &reply) != REDIS_OK)
        throw ConnectionLost{error_of(*context)};
      if (reply != nullptr) take(*Reply(static_cast<redisReply *>(reply)));
    } while (reply != nullptr && connection.context != nullptr);
    int done = 1;
    if (connection.writing && redisBufferWrite(context, &done) != REDIS_OK) {
      throw ConnectionLost{error_of(*context)};
    }
    connection.writing = done == 0;
  }
}

void look_after(Connection &connection, TimePoint now) {
  if (connection.context == nullptr) return;
  const auto quiet = now - connection.heard;
  if (!connection.awaited.empty() && quiet >= redis_patience) {
    throw ConnectionLost{"no answer for " + std::to_string(redis_patience.count()) + " s"};
  }
  if (connection.awaited.empty() && quiet >= beat)
    say(connection, now, {Ask::sign_of_life, ""}, {"PING"});
}

TimePoint due(const Connection &connection) {
  return connection.heard + (connection.awaited.empty() ? beat : redis_patience);
}

}  // namespace lab
