#include "wire.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace lab {
namespace {

volatile std::sig_atomic_t stop_signal = 0;

void note_signal(int number) {
  stop_signal = number;
}

// Move a number of bytes with `transfer`; false: the other end is gone.
template <class Transfer>
bool move_all(std::size_t size, Transfer transfer) {
  for (std::size_t done = 0; done < size;) {
    if (stop_signal != 0) throw Interrupted{};
    const ssize_t moved = transfer(done, size - done);
    if (moved > 0) {
      done += static_cast<std::size_t>(moved);
    } else if (moved == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool read_all(int socket, void *data, std::size_t size) {
  return move_all(size, [=](std::size_t at, std::size_t left) {
    return ::read(socket, static_cast<uint8_t *>(data) + at, left);
  });
}

bool write_all(int socket, const void *data, std::size_t size) {
  return move_all(size, [=](std::size_t at, std::size_t left) {
    return ::send(socket, static_cast<const uint8_t *>(data) + at, left, MSG_NOSIGNAL);
  });
}

}  // namespace

void stop_on_signals() {
  struct sigaction action {};
  action.sa_handler = note_signal;  // no SA_RESTART: a blocked read returns
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void leave_signals_to_the_lab() {
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);
  stop_signal = 0;
}

bool interrupted() {
  return stop_signal != 0;
}

bool write_frame(int socket, const Bytes &frame) {
  const auto size = static_cast<uint32_t>(frame.size());
  return write_all(socket, &size, sizeof size) && write_all(socket, frame.data(), frame.size());
}

std::optional<Bytes> read_frame(int socket) {
  uint32_t size = 0;
  if (!read_all(socket, &size, sizeof size)) return std::nullopt;
  Bytes frame(size);
  if (!read_all(socket, frame.data(), frame.size())) return std::nullopt;
  return frame;
}

}  // namespace lab
