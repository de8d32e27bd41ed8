// Answers of a database's server: any bytes, through the reader of rows and of changes.

#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "sonic/database.h"
#include "texts.h"

namespace {

using std::chrono_literals::operator""ms;

// A server's ends of both connections.
struct Server {
  std::array<int, 2> ends{};
  lab::OpenDatabase database;

  explicit Server(lab::TimePoint now) {
    std::array<int, 2> theirs{};
    for (std::size_t i = 0; i < ends.size(); ++i) {
      int pair[2];
      must(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, pair) == 0, "there are sockets");
      ends[i] = pair[0];
      theirs[i] = pair[1];
    }
    database = lab::adopt_database(theirs, {}, now);
  }
  Server(const Server &) = delete;
  ~Server() {
    for (const int end : ends) close(end);
  }

  void answer(std::size_t which, std::string_view bytes) const {
    char asked[65536];
    for (const int end : ends) {
      while (recv(end, asked, sizeof asked, 0) > 0) continue;
    }
    (void)send(ends.at(which), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }
};

void check_snapshot(const lab::Snapshot &snapshot) {
  must(lab::printable(snapshot.reason) == snapshot.reason, "a reason can be shown");
  must(snapshot.reason.size() < 1000, "a reason is short");
  must((snapshot.state == lab::SourceState::lost) == !snapshot.reason.empty(),
       "a loss has a reason, and nothing else has");
  lab::InputErrors errors;
  for (const auto &[row, of_row] : snapshot.errors) {
    errors.insert(errors.end(), of_row.begin(), of_row.end());
  }
  const lab::ReadSettings read = lab::settings_of(snapshot.rows, errors);
  check_errors(read.errors, "");
  if (snapshot.state == lab::SourceState::here && read.errors.empty()) {
    write_and_read(read.settings);
  }
}

}  // namespace

// What is sent, an empty line between: '=' to the connection of rows, '!' to that of changes; '+'
// lets three seconds pass.
void check_text(std::string_view rest) {
  lab::TimePoint now = lab::Clock::now();
  const Server server(now);
  const lab::Snapshot &snapshot = lab::snapshot(*server.database);
  lab::step(*server.database, now);
  while (!rest.empty() && snapshot.state != lab::SourceState::lost) {
    const std::size_t end = std::min(rest.find("\n\n"), rest.size() - 1) + 1;
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (piece[0] != '+') server.answer(piece[0] == '!' ? 1 : 0, piece.substr(1));
    now += piece.starts_with('+') ? 3000ms : 10ms;
    lab::step(*server.database, now);
    lab::settle(*server.database, now);
    lab::step(*server.database, now);
  }
  check_snapshot(snapshot);
  // From then on the server is silent.
  for (int i = 0; i < 15 && snapshot.state != lab::SourceState::lost; ++i) {
    now += 1000ms;
    lab::step(*server.database, now);
  }
  must(snapshot.state == lab::SourceState::lost, "a silent server is lost within 15 s");
  check_snapshot(snapshot);
}
