#include "text/signals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <system_error>
#include <utility>

namespace lab {
namespace {

// Of an ordered end, in seconds.
constexpr unsigned longest_end = 1;
constexpr int status_of_interrupted = 2;

volatile std::sig_atomic_t stop_signal = 0;

int signal_file = -1;

void note_signal(int number) {
  // A second signal does not put off the end.
  if (stop_signal == 0) alarm(longest_end);
  stop_signal = number;
  constexpr uint64_t one = 1;
  if (signal_file >= 0) [[maybe_unused]]
    const ssize_t written = write(signal_file, &one, sizeof one);
}

// Only what a signal handler may call. Standard error can be a pipe that nobody reads, too.
void end_now(int) {
  constexpr char text[] = "mcec-lab: interrupted\n";
  pollfd error = {STDERR_FILENO, POLLOUT, 0};
  if (poll(&error, 1, 0) == 1 && (error.revents & POLLOUT) != 0) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  }
  _exit(status_of_interrupted);
}

void handle(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;  // no SA_RESTART: what waits returns
  sigaction(number, &action, nullptr);
}

}  // namespace

void stop_on_signals() {
  handle(SIGALRM, end_now);
  handle(SIGINT, note_signal);
  handle(SIGTERM, note_signal);
  // nohup starts a program with SIGHUP ignored.
  struct sigaction hang_up {};
  if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN) {
    handle(SIGHUP, note_signal);
  }
}

sigset_t stop_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  return signals;
}

void leave_signals_to_the_lab() {
  alarm(0);
  std::signal(SIGALRM, SIG_DFL);
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGUSR1, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  stop_signal = 0;
  if (signal_file >= 0) close(std::exchange(signal_file, -1));
}

int stop_signal_file() {
  if (signal_file < 0) signal_file = eventfd(stop_signal != 0 ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (signal_file < 0) throw std::system_error(errno, std::generic_category(), "no event file");
  return signal_file;
}

bool interrupted() {
  return stop_signal != 0;
}

}  // namespace lab
