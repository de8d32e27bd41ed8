#include "text/wait.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <utility>

namespace lab {
namespace {

// For an orderly exit, in seconds.
constexpr unsigned exit_seconds = 1;
constexpr int interrupted_status = 2;

volatile std::sig_atomic_t stop_signal = 0;
int signal_file = -1;

void on_stop_signal(int number) {
  // A second signal does not extend the time.
  if (stop_signal == 0) alarm(exit_seconds);
  stop_signal = number;
  constexpr uint64_t one = 1;
  if (signal_file >= 0) {
    [[maybe_unused]] const ssize_t written = write(signal_file, &one, sizeof one);
  }
}

// A signal handler: only async-signal-safe calls. Standard error may be a full pipe, too.
void on_alarm(int) {
  constexpr char text[] = "mcec-lab: interrupted\n";
  pollfd error = {STDERR_FILENO, POLLOUT, 0};
  if (poll(&error, 1, 0) == 1 && (error.revents & POLLOUT) != 0) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof text - 1);
  }
  _exit(interrupted_status);
}

void set_handler(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;  // without SA_RESTART, so that system calls return EINTR
  sigaction(number, &action, nullptr);
}

}  // namespace

void stop_on_signals() {
  set_handler(SIGALRM, on_alarm);
  set_handler(SIGINT, on_stop_signal);
  set_handler(SIGTERM, on_stop_signal);
  // Under nohup, SIGHUP stays ignored.
  struct sigaction hang_up {};
  if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN) {
    set_handler(SIGHUP, on_stop_signal);
  }
}

bool interrupted() {
  return stop_signal != 0;
}

int stop_signal_file() {
  if (signal_file < 0) signal_file = eventfd(stop_signal != 0 ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (signal_file < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return signal_file;
}

void reset_child_signals() {
  alarm(0);
  std::signal(SIGALRM, SIG_DFL);
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);
  std::signal(SIGUSR1, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  stop_signal = 0;
  if (signal_file >= 0) close(std::exchange(signal_file, -1));
}

void wait(std::vector<pollfd> &files, TimePoint until) {
  using namespace std::chrono_literals;
  const auto left = std::clamp<Clock::duration>(until - Clock::now(), 0s, 24h);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec time{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  // Block the signals until ppoll(), so that none is missed after the check of interrupted().
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stop_signals, signal);
  sigset_t original;
  sigprocmask(SIG_BLOCK, &stop_signals, &original);
  if (!interrupted()) ppoll(files.data(), files.size(), &time, &original);
  sigprocmask(SIG_SETMASK, &original, nullptr);
  if (interrupted()) throw Interrupted{};
}

void wait_for(int file, short event) {
  std::vector<pollfd> files = {{file, event, 0}};
  while (files[0].revents == 0) wait(files, TimePoint::max());
}

}  // namespace lab
