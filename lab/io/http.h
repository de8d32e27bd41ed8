// An HTTP server in the event loop, for pages that are read: GET and HEAD, no bodies, no TLS.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace lab {

struct Loop;

struct HttpReply {
  std::string type;  // "text/html; charset=utf-8"
  std::string body;
};

// What was asked for, decoded.
using HttpQuery = std::map<std::string, std::string>;
struct HttpRequest {
  std::string path;
  HttpQuery query;
};

// Nothing: there is no such page.
using HttpAnswer = std::function<std::optional<HttpReply>(const HttpRequest &request)>;

struct HttpState;

/*
 * Answers requests until the record ends, at most 32 at once, each with up to 8 KiB. A client has
 * 5 s to send its request and 30 s to take the answer; none delays the loop. On a loopback address
 * only requests that name this machine are answered, lest a page of the network reads these through
 * its user's browser.
 */
struct HttpServer {
  // The address: "127.0.0.1:8080" or "[::1]:8080", port 0: one that is free. Throws
  // std::runtime_error when it is wrong, or cannot be listened on.
  HttpServer(Loop &loop, const std::string &address, HttpAnswer answer);
  ~HttpServer();

  uint16_t port() const;

  std::unique_ptr<HttpState> state;
};

}  // namespace lab
