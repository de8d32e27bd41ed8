// An HTTP server in the event loop, for pages that are read: GET and HEAD, no bodies, no TLS.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lab {

struct Loop;

struct HttpReply {
  std::string type;  // "text/html; charset=utf-8"
  std::string body;
};

// Is given what was asked for, as it was sent: "/pair/rack%2012?last". Nothing: there is no such
// page.
using HttpAnswer = std::function<std::optional<HttpReply>(std::string_view target)>;

// What is wrong with an address to listen on; "" for "127.0.0.1:8080" and "[::1]:8080". Port 0: one
// that is free.
std::string find_problem_of_address(const std::string &address);

struct HttpState;

/*
 * Answers requests until the record ends, at most 32 at once, each with up to 8 KiB. A client has
 * 5 s to send its request and 30 s to take the answer; none delays the loop. On a loopback address
 * only requests that name this machine are answered, lest a page of the network reads these through
 * its user's browser.
 */
struct HttpServer {
  // Throws std::runtime_error when the address is wrong, or cannot be listened on.
  HttpServer(Loop &loop, const std::string &address, HttpAnswer answer);
  ~HttpServer();

  uint16_t port() const;

  std::unique_ptr<HttpState> state;
};

}  // namespace lab
