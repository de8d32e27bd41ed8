// The HTTP server.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <list>
#include <thread>

#include "io/http.h"
#include "io/loop.h"

namespace lab {
namespace {

using namespace std::chrono_literals;

constexpr auto answer_time = 2s;  // of a server without slow clients

std::optional<HttpReply> answer_test(const HttpRequest &request) {
  if (request.path == "/none") return std::nullopt;
  if (request.path == "/error") throw std::runtime_error("no memory");
  std::string text = "path " + request.path;
  for (const auto &[name, value] : request.query) text += ";" + name + "=" + value;
  return HttpReply{"text/plain", text};
}

struct RunningServer {
  Loop loop;
  HttpServer server{loop, "127.0.0.1:0", answer_test};
  std::atomic<bool> is_over = false;
  Timer timer{loop, [this] {
                if (is_over) return loop.stop();
                timer.set_after(10ms);
              }};
  std::thread thread{[this] {
    timer.set_after(10ms);
    loop.run();
  }};

  ~RunningServer() {
    is_over = true;
    thread.join();
  }
};

struct Client {
  int file = socket(AF_INET, SOCK_STREAM, 0);

  Client(const RunningServer &running, std::string_view text) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(running.server.port());
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval patience = {20, 0};
    setsockopt(file, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    EXPECT_EQ(connect(file, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    send_text(text);
  }
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;
  ~Client() { close(file); }

  bool send_text(std::string_view text) const {
    return send(file, text.data(), text.size(), MSG_NOSIGNAL) == ssize_t(text.size());
  }

  // Reads until the server closes the connection.
  std::string read_answer() const {
    std::string text;
    char part[4096];
    for (ssize_t got; (got = recv(file, part, sizeof part, 0)) > 0;) text.append(part, size_t(got));
    return text;
  }
};

std::string find_problem_of_address(const std::string &address) {
  Loop loop;
  try {
    const HttpServer server(loop, address, answer_test);
    return "";
  } catch (const std::runtime_error &error) {
    return error.what();
  }
}

TEST(Http, RefusesInvalidAddresses) {
  const RunningServer running;
  const std::string used = "127.0.0.1:" + std::to_string(running.server.port());
  EXPECT_EQ(find_problem_of_address("0.0.0.0:0"), "");
  EXPECT_EQ(find_problem_of_address(used), used + ": Address already in use");
  EXPECT_EQ(find_problem_of_address("[::1]:0").find("; expected"), std::string::npos);
  for (const char *address : {"", "8080", ":80", "localhost:80", "127.0.0.1",
                              "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1", "127.0.0.1:80x",
                              "::1:80", "[::1]", "[::1:80", "[127.0.0.1]:80", "[::1]x:80"}) {
    const std::string problem = find_problem_of_address(address);
    EXPECT_NE(problem.find("; expected a num"), std::string::npos) << address << problem;
  }
}

TEST(Http, AnswersRequests) {
  const std::string end = "\r\nHost: localhost:80\r\n\r\n";
  const std::string large(9000, 'x');
  const struct {
    std::string request;
    const char *status;
    const char *body;  // the end of the answer
  } rows[] = {
      {"GET /a%2Fb%zz?c=1&e&c=%20+d HTTP/1.1" + end, "200", "\r\n\r\npath /a/b%zz;c=  d;e="},
      {"GET / HTTP/1.0\r\n\r\n", "200", "path /"},
      {"GET / HTTP/1.1\r\nHost: [::1]:80\r\n\r\n", "200", "path /"},
      {"GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", "200", "path /"},
      {"GET / HTTP/1.1\r\nHost: example.org\r\n\r\n", "403", "name of this machine\n"},
      {"GET / HTTP/1.1\r\nHost: localhost.example.org\r\n\r\n", "403", "name of this machine\n"},
      {"HEAD / HTTP/1.1" + end, "200", "\r\n\r\n"},
      {"GET /none HTTP/1.1" + end, "404", "no such page\n"},
      {"GET /error HTTP/1.1" + end, "500", "no memory\n"},
      {"POST / HTTP/1.1\r\nContent-Length: 3" + end + "abc", "405", "GET and HEAD only\n"},
      {"DELETE / HTTP/1.1" + end, "405", "GET and HEAD only\n"},
      {"GET / HTTP/1.1\r\nContent-Length: 3" + end, "413", "no body\n"},
      {"GET / HTTP/1.1\r\nTransfer-Encoding: chunked" + end, "413", "no body\n"},
      {"GET / HTTP/1.1\r\nX: " + large + end, "431", ""},
      {"GET /" + large + " HTTP/1.1" + end, "414", ""},
  };
  const RunningServer running;
  for (const auto &row : rows) {
    const Client client(running, row.request);
    const std::string answer = client.read_answer();
    EXPECT_EQ(answer.substr(0, 12), std::string("HTTP/1.1 ") + row.status)
        << row.request.substr(0, 80);
    EXPECT_TRUE(answer.ends_with(row.body)) << answer;
    const bool is_refused = answer.find("\r\nAllow: GET, HEAD\r\n") != answer.npos;
    EXPECT_EQ(is_refused, row.status == std::string("405")) << answer;
  }
}

TEST(Http, SlowClientsDoNotDelayOthers) {
  const RunningServer running;
  const std::string request = "GET / HTTP/1.0\r\n\r\n";
  const TimePoint start = Clock::now();
  // One client sends single bytes, the others half a request.
  const Client slow(running, "GET / HTTP/1.0\r\nX: ");
  std::list<Client> half;
  for (int i = 0; i < 30; ++i) half.emplace_back(running, "GET");
  EXPECT_NE(Client(running, request).read_answer(), "");
  EXPECT_LT(Clock::now() - start, answer_time);

  half.emplace_back(running, "GET");
  const Client waits(running, request);  // the 33rd
  char byte;
  while (recv(slow.file, &byte, 1, MSG_DONTWAIT) < 0 && Clock::now() < start + 20s) {
    slow.send_text("x");
    std::this_thread::sleep_for(100ms);
  }
  const auto ends_after = Clock::now() - start;
  EXPECT_GT(ends_after, 4s);
  EXPECT_LT(ends_after, 5s + answer_time);
  EXPECT_NE(waits.read_answer(), "");
  EXPECT_GT(Clock::now() - start, 4s);
  EXPECT_LT(Clock::now() - start, 5s + answer_time);
}

}  // namespace
}  // namespace lab
