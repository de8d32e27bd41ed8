// Answers of a database server, read as rows and as changes.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <string>

#include "sonic/database.h"
#include "texts.h"

namespace {

using std::chrono_literals::operator""ms;

// A listening socket for the connections of all inputs.
struct Listener {
  std::string path = "/tmp/servers-fuzz." + std::to_string(getpid());
  int file = socket(AF_UNIX, SOCK_STREAM, 0);

  Listener() {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(path.c_str());
    must(bind(file, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
             listen(file, 2) == 0,
         "the socket listens");
  }
  ~Listener() { unlink(path.c_str()); }
};

const Listener &listener() {
  static const Listener only;
  return only;
}

lab::Source listening_source() {
  lab::Source source;
  source.kind = lab::Source::Kind::unix_socket;
  source.place = listener().path;
  return source;
}

// A server with both of its connections.
struct Server {
  std::array<int, 2> ends{};  // of rows, of changes
  lab::Database database;

  explicit Server(lab::TimePoint now)
      : database(lab::open_database(listening_source(), {}, now, {})) {
    lab::step(database, now);
    for (int &end : ends) end = accept4(listener().file, nullptr, nullptr, SOCK_NONBLOCK);
  }
  Server(const Server &) = delete;
  ~Server() {
    for (const int end : ends) close(end);
  }

  void answer(std::size_t which, std::string_view bytes) const {
    char request[65536];
    for (const int end : ends) {
      while (recv(end, request, sizeof request, 0) > 0) continue;
    }
    (void)send(ends.at(which), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }
};

void check_snapshot(const lab::Snapshot &snapshot) {
  must(lab::printable(snapshot.reason) == snapshot.reason, "a reason is printable");
  must(snapshot.reason.size() < 1000, "a reason is short");
  must((snapshot.state == lab::SourceState::disconnected) == !snapshot.reason.empty(),
       "exactly a disconnected source has a reason");
  const lab::ReadSettings read =
      lab::interpret_rows(lab::unpack(snapshot.contents), lab::all_errors(snapshot));
  check_errors(read.errors, "");
  if (snapshot.state == lab::SourceState::connected && read.errors.empty()) {
    write_and_read(read.settings);
  }
}

}  // namespace

// The input is a list of answers, separated by empty lines. The first byte of an answer selects the
// connection: '!' that of changes, '+' none (3 seconds pass), any other byte that of rows.
void check_text(std::string_view rest) {
  lab::TimePoint now = lab::Clock::now();
  Server server(now);
  const lab::Snapshot &snapshot = server.database.snapshot;
  while (!rest.empty() && snapshot.state != lab::SourceState::disconnected) {
    const std::size_t end = std::min(rest.find("\n\n"), rest.size() - 1) + 1;
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (piece[0] != '+') server.answer(piece[0] == '!' ? 1 : 0, piece.substr(1));
    now += piece.starts_with('+') ? 3000ms : 10ms;
    lab::step(server.database, now);
    lab::settle(server.database, now);
    lab::step(server.database, now);
  }
  check_snapshot(snapshot);
  // The server sends nothing more.
  for (int i = 0; i < 15 && snapshot.state != lab::SourceState::disconnected; ++i) {
    now += 1000ms;
    lab::step(server.database, now);
  }
  must(snapshot.state == lab::SourceState::disconnected,
       "a silent server is disconnected within 15 s");
  check_snapshot(snapshot);
}
