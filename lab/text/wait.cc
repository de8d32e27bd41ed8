#include "text/wait.h"

#include <algorithm>
#include <csignal>

#include "text/signals.h"

namespace lab {

void wait(std::vector<pollfd> &sockets, TimePoint until) {
  using namespace std::chrono_literals;
  const auto left = std::clamp<Clock::duration>(until - Clock::now(), 0s, 24h);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec time{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  // A signal that comes between the question and the waiting must end the waiting.
  sigset_t stopping;
  sigset_t usual;
  sigemptyset(&stopping);
  sigaddset(&stopping, SIGINT);
  sigaddset(&stopping, SIGTERM);
  sigprocmask(SIG_BLOCK, &stopping, &usual);
  if (!interrupted()) ppoll(sockets.data(), sockets.size(), &time, &usual);
  sigprocmask(SIG_SETMASK, &usual, nullptr);
  if (interrupted()) throw Interrupted{};
}

}  // namespace lab
