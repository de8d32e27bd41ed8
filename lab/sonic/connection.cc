#include "sonic/connection.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include "text/text.h"

namespace lab {
namespace {

const std::string protocol_error = "protocol error: ";

// Reads of one socket before the event loop continues, so that no source starves the others.
constexpr int max_reads = 64;

struct FreeReply {
  void operator()(redisReply *reply) const { freeReplyObject(reply); }
};

const redisReplyObjectFunctions *default_functions = nullptr;

// Refuses to allocate a list with more elements than an answer may have, whatever length the server
// announces.
template <class Count>
void *create_array(const redisReadTask *task, Count elements) {
  std::size_t &left = *static_cast<std::size_t *>(task->privdata);
  if (static_cast<std::size_t>(elements) > left) return nullptr;
  left -= static_cast<std::size_t>(elements);
  return default_functions->createArray(task, elements);
}

// How servers of other protocols answer a Redis request.
constexpr struct {
  std::string_view prefix;
  const char *protocol;
} other_protocols[] = {{"HTTP/", "HTTP"},
                       {"<", "HTTP"},  // HTTP/0.9 has no status line
                       {"SSH-", "SSH"},
                       {std::string_view("\x15\x03", 2), "TLS"},
                       {std::string_view("\x16\x03", 2), "TLS"}};

std::string describe_other_server(const Connection &connection) {
  std::string text = "no Redis server answered at " + connection.place;
  for (const auto &[prefix, protocol] : other_protocols) {
    if (connection.first_bytes.starts_with(prefix)) {
      return text + " (looks like " + protocol + ")";
    }
  }
  return text;
}

std::string describe_error(const Connection &connection) {
  const redisContext &context = *connection.context;
  const bool is_cut = context.err == REDIS_ERR_IO && (errno == ECONNRESET || errno == EPIPE);
  if (context.err == REDIS_ERR_EOF || is_cut) return "the server closed the connection";
  if (context.err == REDIS_ERR_OOM) {
    return "the server sends an answer of more than " +
           std::to_string(connection.limits.answer_elements) + " elements";
  }
  if (context.err != REDIS_ERR_PROTOCOL) return printable(context.errstr);
  return connection.is_redis ? protocol_error + printable(context.errstr)
                             : describe_other_server(connection);
}

void finish_connecting(Connection &connection) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(connection.context->fd, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) throw ConnectionError{std::strerror(error)};
  connection.connected = true;
}

void read_available(Connection &connection) {
  redisReader *reader = connection.context->reader;
  const std::size_t before = reader->len;
  if (redisBufferRead(connection.context.get()) != REDIS_OK) {
    throw ConnectionError{describe_error(connection)};
  }
  connection.unfinished_bytes += reader->len - before;
  constexpr std::size_t greeting_size = 8;
  if (connection.first_bytes.size() < greeting_size && reader->len > 0) {
    connection.first_bytes.append(reader->buf + before,
                                  std::min(reader->len - before, greeting_size));
  }
}

// The protocol does not announce the length of a line, and the reader searches the whole buffer for
// its end after each read.
bool has_long_line(const redisReader &reader, std::size_t limit) {
  const std::size_t waiting = reader.len - reader.pos;
  return waiting > limit && std::memchr(reader.buf + reader.pos, '\n', limit) == nullptr;
}

void allow_next_answer(Connection &connection) {
  const redisReader &reader = *connection.context->reader;
  connection.unfinished_bytes = reader.len - reader.pos;
  *connection.elements_left = connection.limits.answer_elements;
}

void read_answers(Connection &connection,
                  const std::function<void(const redisReply &)> &on_answer) {
  while (connection.context != nullptr) {
    void *raw = nullptr;
    if (redisGetReplyFromReader(connection.context.get(), &raw) != REDIS_OK) {
      throw ConnectionError{describe_error(connection)};
    }
    const std::unique_ptr<redisReply, FreeReply> reply(static_cast<redisReply *>(raw));
    if (reply == nullptr) break;
    connection.is_redis = true;
    allow_next_answer(connection);
    on_answer(*reply);
  }
  const ReadLimits &limits = connection.limits;
  if (connection.context != nullptr &&
      has_long_line(*connection.context->reader, limits.line_bytes)) {
    throw ConnectionError{"the server sends a line of more than " +
                          std::to_string(limits.line_bytes) + " bytes"};
  }
  if (connection.unfinished_bytes > limits.answer_bytes) {
    throw ConnectionError{"the server sends an answer of more than " +
                          std::to_string(limits.answer_bytes) + " bytes"};
  }
}

Resolved resolve(const std::string &host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo *found = nullptr;
  const int error = getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (error != 0) return {{}, "cannot resolve the host: " + printable(gai_strerror(error))};
  Resolved resolved;
  for (const addrinfo *at = found; at != nullptr; at = at->ai_next) {
    char address[NI_MAXHOST];
    if (getnameinfo(at->ai_addr, at->ai_addrlen, address, sizeof address, nullptr, 0,
                    NI_NUMERICHOST) == 0) {
      resolved.addresses.emplace_back(address);
    }
  }
  freeaddrinfo(found);
  if (resolved.addresses.empty()) resolved.problem = "the host has no address";
  return resolved;
}

}  // namespace

void throw_protocol_error(const std::string &problem) {
  throw ConnectionError{protocol_error + problem};
}

bool is_address(const std::string &host) {
  in6_addr address;
  return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

Resolver start_resolver(const std::string &host, TimePoint due) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot create a pipe");
  }
  Resolver resolver{{}, Descriptor(ends[0]), due};
  std::packaged_task<Resolved()> task([host] { return resolve(host); });
  resolver.result = task.get_future();
  // Nothing waits for the thread, not even the exit of the process. When it ends, its end of the
  // pipe closes, and the other end becomes readable.
  std::thread([task = std::move(task), end = Descriptor(ends[1])]() mutable { task(); }).detach();
  return resolver;
}

Connection connect_to(const Source &source, const std::string &address, const ReadLimits &limits) {
  const bool is_path = source.kind == Source::Kind::unix_socket;
  redisContext *context = is_path ? redisConnectUnixNonBlock(source.place.c_str())
                                  : redisConnectNonBlock(address.c_str(), source.port);

  Connection connection;
  connection.context.reset(context);

  connection.place = printable(source.place);
  if (!is_path) connection.place += ":" + std::to_string(source.port);
  connection.limits = limits;
  connection.elements_left = std::make_unique<std::size_t>(limits.answer_elements);
  if (context == nullptr) throw ConnectionError{"out of memory for a connection"};
  if (context->err != 0) throw ConnectionError{describe_error(connection)};
  static redisReplyObjectFunctions functions;
  default_functions = std::exchange(context->reader->fn, &functions);
  functions = *default_functions;
  functions.createArray = create_array;
  context->reader->privdata = connection.elements_left.get();
  return connection;
}

void send_request(Connection &connection, TimePoint now, Query kind,
                  const std::vector<std::string> &words) {
  std::vector<const char *> texts;
  std::vector<std::size_t> lengths;
  for (const std::string &word : words) {
    texts.push_back(word.data());
    lengths.push_back(word.size());
  }
  if (redisAppendCommandArgv(connection.context.get(), static_cast<int>(words.size()), texts.data(),
                             lengths.data()) != REDIS_OK) {
    throw ConnectionError{describe_error(connection)};
  }
  if (connection.pending.empty()) connection.last_answer = now;
  connection.is_writing = true;
  connection.pending.push_back({kind, kind == Query::row ? words.back() : ""});
}

void log_in(const Source &source, Connection &connection, TimePoint now) {
  if (source.user.empty() && source.password.empty()) return;
  std::vector<std::string> words = {"AUTH"};
  if (!source.user.empty()) words.push_back(source.user);
  words.push_back(source.password);
  send_request(connection, now, Query::login, words);
}

PendingQuery take_query(Connection &connection, TimePoint now) {
  if (connection.pending.empty()) throw_protocol_error("an unexpected answer");
  connection.last_answer = now;
  PendingQuery request = std::move(connection.pending.front());
  connection.pending.pop_front();
  return request;
}

bool is_expected_error(Query kind, std::string_view error) {
  if (kind == Query::row) return error.starts_with("WRONGTYPE");
  return (kind == Query::config || kind == Query::size) && !error.starts_with("LOADING");
}

void throw_server_error(Query kind, std::string_view error, const ReadLimits &limits) {
  const auto has_code = [error](const char *word) { return error.starts_with(word); };
  if (has_code("LOADING")) throw ConnectionError{"the server is loading its data"};
  if (has_code("NOAUTH")) throw ConnectionError{"the server requires a password", true};
  std::string text = printable(cut(error.substr(0, error.find(". ")), limits.error_bytes));
  if (text.empty()) text = "the server answers with an error";
  if (has_code("NOPERM")) throw ConnectionError{text, true};
  // The answer to AUTH may quote the password: do not show it.
  if (kind == Query::login && !has_code("ERR max number of clients") && !has_code("DENIED")) {
    throw ConnectionError{"the password is refused", true};
  }
  // A database number that the server does not have stays invalid.
  throw ConnectionError{text, kind == Query::select};
}

std::string_view reply_text(const redisReply &reply) {
  return reply.str != nullptr ? std::string_view(reply.str, reply.len) : std::string_view();
}

bool needs_writing(const Connection &connection) {
  return connection.is_writing || !connection.connected;
}

void flush(Connection &connection) {
  if (connection.context == nullptr || !connection.connected || !connection.is_writing) return;
  int done = 1;
  if (redisBufferWrite(connection.context.get(), &done) != REDIS_OK) {
    throw ConnectionError{describe_error(connection)};
  }
  connection.is_writing = done == 0;
}

void read_and_write(Connection &connection,
                    const std::function<void(const redisReply &)> &on_answer) {
  for (int i = 0; i < max_reads && connection.context != nullptr; ++i) {
    const int events = needs_writing(connection) ? POLLIN | POLLOUT : POLLIN;
    pollfd ready = {connection.context->fd, static_cast<int16_t>(events), 0};
    if (poll(&ready, 1, 0) <= 0) return;
    if (!connection.connected) finish_connecting(connection);
    if ((ready.revents & ~POLLOUT) != 0) {
      read_available(connection);
      read_answers(connection, on_answer);
    }
    flush(connection);
  }
}

void check_answer_time(const Connection &connection, TimePoint now) {
  if (connection.pending.empty() || now - connection.last_answer < connection.limits.answer_time) {
    return;
  }
  throw ConnectionError{"no complete answer within " + seconds_text(connection.limits.answer_time)};
}

bool is_quiet(const Connection &connection, TimePoint now, Clock::duration time) {
  return connection.context != nullptr && connection.pending.empty() &&
         now - connection.last_answer >= time;
}

TimePoint due(const Connection &connection, Clock::duration probe_interval) {
  return connection.last_answer +
         (connection.pending.empty() ? probe_interval : connection.limits.answer_time);
}

}  // namespace lab
