// An HTTP server in the event loop: GET and HEAD only, no request bodies, no TLS.
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

using HttpQuery = std::map<std::string, std::string>;

struct HttpRequest {  // decoded
  std::string path;
  HttpQuery query;
};

// Returns nullopt if there is no such page.
using HttpHandler = std::function<std::optional<HttpReply>(const HttpRequest &request)>;

struct HttpState;

// Accepts up to 32 connections, with requests of up to 8 KiB. A client has 5 s to send its request
// and 30 s to receive the answer, and never blocks the loop. On a loopback address, a request must
// name this machine in its Host header: a page from elsewhere cannot read the data through a
// browser on this machine (DNS rebinding).
struct HttpServer {
  // Listens on an address such as "127.0.0.1:8080" or "[::1]:8080"; port 0 selects a free port.
  // Throws std::runtime_error if the address is invalid or cannot be used.
  HttpServer(Loop &loop, const std::string &address, HttpHandler handler);
  ~HttpServer();

  uint16_t port() const;

  std::unique_ptr<HttpState> state;
};

}  // namespace lab
