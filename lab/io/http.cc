#include "io/http.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "io/loop.h"
#include "text/text.h"

namespace lab {

struct StopDaemon {
  void operator()(MHD_Daemon *daemon) const { MHD_stop_daemon(daemon); }
};

struct HttpState {
  Loop &loop;
  HttpHandler handler;
  bool is_local;
  std::string host;  // of the address
  std::unique_ptr<MHD_Daemon, StopDaemon> daemon = {};
  std::optional<FileWatch> ready = {};
  std::optional<Timer> timer = {};
};

namespace {

using namespace std::chrono_literals;

constexpr unsigned max_connections = 32;
constexpr std::size_t max_request_bytes = 8192;
constexpr auto request_time = 5s;  // also the limit without progress
constexpr auto answer_time = 30s;

// --- addresses ---

union HttpAddress {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

// Returns the host, with the brackets of an IPv6 address. Throws std::runtime_error.
std::string parse_address(const std::string &text, HttpAddress &address) {
  const std::size_t colon = std::min(text.rfind(':'), text.size());
  const std::string host = text.substr(0, colon);
  const auto port = parse_number(text.substr(std::min(colon + 1, text.size())));
  const bool is_v6 = host.starts_with('[') && host.ends_with(']');
  if (!port || *port > UINT16_MAX ||
      (is_v6 ? uv_ip6_addr(host.substr(1, host.size() - 2).c_str(), int(*port), &address.v6)
             : uv_ip4_addr(host.c_str(), int(*port), &address.v4)) != 0) {
    throw std::runtime_error("found '" + text +
                             "'; expected a numeric address and a port, as 127.0.0.1:8080");
  }
  return host;
}

bool is_loopback(const HttpAddress &address) {
  if (address.any.sa_family == AF_INET6) return IN6_IS_ADDR_LOOPBACK(&address.v6.sin6_addr);
  return ntohl(address.v4.sin_addr.s_addr) >> 24 == IN_LOOPBACKNET;
}

// Returns true if the Host header of a request names this machine, or is absent.
bool names_this_machine(const HttpState &state, const char *header) {
  if (header == nullptr) return true;
  const std::string_view asked = header;
  for (const std::string_view host : {"localhost", "127.0.0.1", "[::1]", state.host.c_str()}) {
    if (asked == host || (asked.starts_with(host) && asked[host.size()] == ':')) return true;
  }
  return false;
}

// --- answers ---

// Pages contain stricter policies of their own, with the hashes of their styles and scripts. A
// connection serves one request, so that its deadlines are those of the request.
constexpr std::pair<const char *, const char *> common_headers[] = {
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

HttpRequest read_request(MHD_Connection *connection, const char *path) {
  HttpRequest request = {path, {}};
  const auto add = [](void *query, MHD_ValueKind, const char *name, const char *value) {
    (*static_cast<HttpQuery *>(query))[name] = value != nullptr ? value : "";
    return MHD_YES;
  };
  MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, add, &request.query);
  return request;
}

// Returns the deadline that is stored with a connection.
Timer &deadline_of(MHD_Connection *connection) {
  return *static_cast<Timer *>(
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

MHD_Result handle_request(void *data, MHD_Connection *connection, const char *path,
                          const char *method, const char *, const char *, std::size_t *, void **) {
  const HttpState &state = *static_cast<HttpState *>(data);
  deadline_of(connection).set_after(answer_time);
  const auto header = [connection](const char *name) {
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  };
  if (std::strcmp(method, "GET") != 0 && std::strcmp(method, "HEAD") != 0) {
    return send_error(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "GET and HEAD only");
  }
  if (header(MHD_HTTP_HEADER_CONTENT_LENGTH) || header(MHD_HTTP_HEADER_TRANSFER_ENCODING)) {
    return send_error(connection, MHD_HTTP_CONTENT_TOO_LARGE, "a request has no body");
  }
  if (state.is_local && !names_this_machine(state, header(MHD_HTTP_HEADER_HOST))) {
    return send_error(connection, MHD_HTTP_FORBIDDEN, "not the name of this machine");
  }
  // An exception must not pass through the C code of the daemon, or end a watch.
  try {
    const std::optional<HttpReply> reply = state.handler(read_request(connection, path));
    return reply ? send_reply(connection, MHD_HTTP_OK, *reply)
                 : send_error(connection, MHD_HTTP_NOT_FOUND, "no such page");
  } catch (const std::exception &error) {
    return send_error(connection, MHD_HTTP_INTERNAL_SERVER_ERROR, error.what());
  }
}

void on_connection(void *data, MHD_Connection *connection, void **deadline,
                   MHD_ConnectionNotificationCode code) {
  if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
    delete static_cast<Timer *>(*deadline);
    return;
  }
  const int file =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
  // The daemon then closes the connection.
  const auto end = [file] { shutdown(file, SHUT_RDWR); };
  auto *timer = new Timer(static_cast<HttpState *>(data)->loop, end);
  timer->set_after(request_time);
  *deadline = timer;
}

void serve_http(HttpState &state) {
  MHD_Daemon *const daemon = state.daemon.get();
  const auto count_connections = [daemon] {
    return MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_CURRENT_CONNECTIONS)->num_connections;
  };
  // At its limit, the daemon accepts new connections only in the run after one has closed.
  unsigned count = 0;
  do {
    count = count_connections();
    MHD_run(daemon);
  } while (count_connections() < count);
  MHD_UNSIGNED_LONG_LONG pause = 0;
  if (MHD_get_timeout(daemon, &pause) == MHD_YES) {
    state.timer->set_after(std::chrono::milliseconds(pause));
  }
}

MHD_Daemon *start_daemon(HttpState &state, const HttpAddress &address) {
  return MHD_start_daemon(
      MHD_USE_EPOLL | (address.any.sa_family == AF_INET6 ? MHD_USE_DUAL_STACK : MHD_NO_FLAG), 0,
      nullptr, nullptr, handle_request, &state, MHD_OPTION_SOCK_ADDR, &address.any,
      MHD_OPTION_CONNECTION_LIMIT, max_connections, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
      max_request_bytes, MHD_OPTION_CONNECTION_TIMEOUT, unsigned(request_time.count()),
      MHD_OPTION_NOTIFY_CONNECTION, on_connection, &state, MHD_OPTION_STRICT_FOR_CLIENT, 1,
      MHD_OPTION_END);
}

}  // namespace

HttpServer::HttpServer(Loop &loop, const std::string &address, HttpHandler handler) {
  HttpAddress parsed = {};
  const std::string host = parse_address(address, parsed);
  state =
      std::make_unique<HttpState>(HttpState{loop, std::move(handler), is_loopback(parsed), host});
  state->daemon.reset(start_daemon(*state, parsed));
  if (!state->daemon) throw std::runtime_error(address + ": " + std::strerror(errno));
  const int events = MHD_get_daemon_info(state->daemon.get(), MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
  const auto serve = [state = state.get()] { serve_http(*state); };
  state->timer.emplace(loop, serve);
  state->ready.emplace(loop, events, serve);
  state->ready->wait_for(UV_READABLE);
}

HttpServer::~HttpServer() = default;

uint16_t HttpServer::port() const {
  return MHD_get_daemon_info(state->daemon.get(), MHD_DAEMON_INFO_BIND_PORT)->port;
}

}  // namespace lab
