#include "text/wait.h"

#include <algorithm>

#include "text/signals.h"

namespace lab {

void wait(std::vector<pollfd> &files, TimePoint until) {
  using namespace std::chrono_literals;
  const auto left = std::clamp<Clock::duration>(until - Clock::now(), 0s, 24h);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec time{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  // A signal that comes between the question and the waiting must end the waiting.
  const sigset_t stopping = stop_signals();
  sigset_t usual;
  sigprocmask(SIG_BLOCK, &stopping, &usual);
  if (!interrupted()) ppoll(files.data(), files.size(), &time, &usual);
  sigprocmask(SIG_SETMASK, &usual, nullptr);
  if (interrupted()) throw Interrupted{};
}

void wait_for(int file, short event) {
  std::vector<pollfd> files;
  do {
    files = {{file, event, 0}};
    wait(files, TimePoint::max());
  } while (files[0].revents == 0);
}

}  // namespace lab
