#include "io/http.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <list>
#include <stdexcept>
#include <utility>

#include "io/loop.h"

namespace lab {

struct HttpConnection {
  int file;
  TimePoint deadline;
  std::string target;
};

struct StopDaemon {
  void operator()(MHD_Daemon *daemon) const { MHD_stop_daemon(daemon); }
};

struct HttpState {
  HttpAnswer answer;
  bool is_local;
  std::list<HttpConnection> connections = {};
  std::unique_ptr<MHD_Daemon, StopDaemon> daemon = {};
  std::optional<FileWatch> ready = {};
  std::optional<Timer> timer = {};
};

namespace {

using namespace std::chrono_literals;

constexpr unsigned most_connections = 32;
constexpr std::size_t most_request_bytes = 8192;
constexpr auto request_time = 5s;  // and without progress
constexpr auto answer_time = 30s;

// --- addresses ---

union HttpAddress {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

// A numeric address, an IPv6 one without its brackets.
bool parse_host(const std::string &host, HttpAddress &address) {
  address = {};
  if (inet_pton(AF_INET, host.c_str(), &address.v4.sin_addr) == 1) {
    address.any.sa_family = AF_INET;
  } else if (inet_pton(AF_INET6, host.c_str(), &address.v6.sin6_addr) == 1) {
    address.any.sa_family = AF_INET6;
  }
  return address.any.sa_family != AF_UNSPEC;
}

// "[::1]:8080" as its two parts, the host with its brackets; the port is empty where there is none.
std::pair<std::string, std::string> split_port(const std::string &text) {
  const std::size_t end = text.starts_with('[') ? text.find(']') : 0;
  const std::size_t colon = end == text.npos ? end : text.find(':', end);
  if (colon == text.npos) return {text, ""};
  return {text.substr(0, colon), text.substr(colon + 1)};
}

std::string without_brackets(const std::string &host) {
  const bool has_both = host.size() > 2 && host.front() == '[' && host.back() == ']';
  return has_both ? host.substr(1, host.size() - 2) : host;
}

std::string parse_address(const std::string &text, HttpAddress &address) {
  const auto [host, digits] = split_port(text);
  const bool has_brackets = host.starts_with('[');
  if (!parse_host(without_brackets(host), address) ||
      has_brackets != (address.any.sa_family == AF_INET6)) {
    return "found '" + text + "'; expected a numeric address and a port, as 127.0.0.1:8080";
  }
  uint16_t port = 0;
  const char *end = digits.data() + digits.size();
  const auto parsed = std::from_chars(digits.data(), end, port);
  if (parsed.ec != std::errc{} || parsed.ptr != end) {
    return "found the port '" + digits + "'; expected a number up to 65535";
  }
  // At the same place in both kinds.
  address.v4.sin_port = htons(port);
  return "";
}

bool is_loopback(const HttpAddress &address) {
  if (address.any.sa_family == AF_INET6) return IN6_IS_ADDR_LOOPBACK(&address.v6.sin6_addr);
  return ntohl(address.v4.sin_addr.s_addr) >> 24 == IN_LOOPBACKNET;
}

// Is it this machine that a request asks for, by its header Host? Programs may send none.
bool is_for_loopback(const char *header) {
  if (header == nullptr) return true;
  const std::string host = split_port(header).first;
  HttpAddress address;
  return host == "localhost" ||
         (parse_host(without_brackets(host), address) && is_loopback(address));
}

int open_listener(const std::string &text, const HttpAddress &address) {
  const auto fail = [&] { throw std::runtime_error(text + ": " + std::strerror(errno)); };
  const int file = socket(address.any.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (file < 0) fail();
  const int on = 1;
  const socklen_t size = address.any.sa_family == AF_INET6 ? sizeof address.v6 : sizeof address.v4;
  setsockopt(file, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(file, &address.any, size) != 0 || listen(file, most_connections) != 0) {
    const int error = errno;
    close(file);
    errno = error;
    fail();
  }
  return file;
}

// --- answers ---

struct HttpHeader {
  const char *name;
  const char *value;
};

// The pages' own policies name the hashes of their styles and scripts. A connection has one
// request, so that its deadlines are those of the request.
constexpr HttpHeader common_headers[] = {
    {MHD_HTTP_HEADER_CACHE_CONTROL, "no-store"},
    {MHD_HTTP_HEADER_CONNECTION, "close"},
    {"Content-Security-Policy",
     "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; "
     "connect-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"}};

MHD_Result send_reply(MHD_Connection *connection, unsigned status, const HttpReply &reply) {
  MHD_Response *response = MHD_create_response_from_buffer(
      reply.body.size(), const_cast<char *>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
  if (response == nullptr) return MHD_NO;
  for (const auto &[name, value] : common_headers) MHD_add_response_header(response, name, value);
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.type.c_str());
  if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
    MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
  }
  const MHD_Result result = MHD_queue_response(connection, status, response);
  MHD_destroy_response(response);
  return result;
}

MHD_Result send_error(MHD_Connection *connection, unsigned status, const std::string &text) {
  return send_reply(connection, status, {"text/plain; charset=utf-8", text + "\n"});
}

HttpConnection &context_of(MHD_Connection *connection) {
  return *static_cast<HttpConnection *>(
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

MHD_Result answer_http(void *data, MHD_Connection *connection, const char *, const char *method,
                       const char *, const char *, std::size_t *, void **) {
  const HttpState &state = *static_cast<HttpState *>(data);
  HttpConnection &context = context_of(connection);
  context.deadline = Clock::now() + answer_time;
  const auto header = [connection](const char *name) {
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  };
  if (std::strcmp(method, "GET") != 0 && std::strcmp(method, "HEAD") != 0) {
    return send_error(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "GET and HEAD only");
  }
  if (header(MHD_HTTP_HEADER_CONTENT_LENGTH) || header(MHD_HTTP_HEADER_TRANSFER_ENCODING)) {
    return send_error(connection, MHD_HTTP_CONTENT_TOO_LARGE, "a request has no body");
  }
  if (state.is_local && !is_for_loopback(header(MHD_HTTP_HEADER_HOST))) {
    return send_error(connection, MHD_HTTP_FORBIDDEN, "not the name of this machine");
  }
  // No exception may pass through the server, and no page ends a watch.
  try {
    const std::optional<HttpReply> reply = state.answer(context.target);
    return reply ? send_reply(connection, MHD_HTTP_OK, *reply)
                 : send_error(connection, MHD_HTTP_NOT_FOUND, "no such page");
  } catch (const std::exception &error) {
    return send_error(connection, MHD_HTTP_INTERNAL_SERVER_ERROR, error.what());
  }
}

void *keep_target(void *, const char *target, MHD_Connection *connection) {
  context_of(connection).target = target;
  return nullptr;
}

void note_connection(void *data, MHD_Connection *connection, void **context,
                     MHD_ConnectionNotificationCode code) {
  std::list<HttpConnection> &connections = static_cast<HttpState *>(data)->connections;
  if (code == MHD_CONNECTION_NOTIFY_STARTED) {
    const int file =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    *context = &connections.emplace_back(HttpConnection{file, Clock::now() + request_time, ""});
  } else {
    connections.remove_if([&](const HttpConnection &item) { return &item == *context; });
  }
}

// Do what is due now, and set the time of what is next.
void serve_http(HttpState &state) {
  const TimePoint now = Clock::now();
  for (HttpConnection &connection : state.connections) {
    if (connection.deadline > now) continue;
    // The daemon sees its end.
    shutdown(connection.file, SHUT_RDWR);
    connection.deadline = TimePoint::max();
  }
  // At its limit the daemon takes no new connections until it runs again after one has ended.
  std::size_t count = 0;
  do {
    count = state.connections.size();
    MHD_run(state.daemon.get());
  } while (state.connections.size() < count);
  TimePoint next = TimePoint::max();
  for (const HttpConnection &connection : state.connections) {
    next = std::min(next, connection.deadline);
  }
  MHD_UNSIGNED_LONG_LONG pause = 0;
  if (MHD_get_timeout(state.daemon.get(), &pause) == MHD_YES) {
    next = std::min(next, Clock::now() + std::chrono::milliseconds(pause));
  }
  state.timer->set(next);
}

MHD_Daemon *start_daemon(HttpState &state, int listener) {
  return MHD_start_daemon(
      MHD_USE_EPOLL, 0, nullptr, nullptr, answer_http, &state, MHD_OPTION_LISTEN_SOCKET, listener,
      MHD_OPTION_CONNECTION_LIMIT, most_connections, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
      most_request_bytes, MHD_OPTION_CONNECTION_TIMEOUT, unsigned(request_time.count()),
      MHD_OPTION_NOTIFY_CONNECTION, note_connection, &state, MHD_OPTION_URI_LOG_CALLBACK,
      keep_target, nullptr, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_END);
}

}  // namespace

std::string find_problem_of_address(const std::string &address) {
  HttpAddress parsed;
  return parse_address(address, parsed);
}

HttpServer::HttpServer(Loop &loop, const std::string &address, HttpAnswer answer) {
  HttpAddress parsed;
  const std::string problem = parse_address(address, parsed);
  if (!problem.empty()) throw std::runtime_error(problem);
  state = std::make_unique<HttpState>(HttpState{std::move(answer), is_loopback(parsed)});
  const int listener = open_listener(address, parsed);
  state->daemon.reset(start_daemon(*state, listener));
  if (!state->daemon) {
    close(listener);
    throw std::runtime_error(address + ": no server can be started");
  }
  const int events = MHD_get_daemon_info(state->daemon.get(), MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
  const auto serve = [state = state.get()] { serve_http(*state); };
  state->timer.emplace(loop, serve);
  state->ready.emplace(loop, events, serve);
  state->ready->wait_for(UV_READABLE);
}

HttpServer::~HttpServer() = default;

uint16_t HttpServer::port() const {
  HttpAddress address;
  socklen_t size = sizeof address;
  const int listener =
      MHD_get_daemon_info(state->daemon.get(), MHD_DAEMON_INFO_LISTEN_FD)->listen_fd;
  getsockname(listener, &address.any, &size);
  return ntohs(address.v4.sin_port);
}

}  // namespace lab
