#include "text/child.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "text/wait.h"

namespace lab {

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept {
  std::swap(pid, other.pid);
  return *this;
}

ChildProcess::~ChildProcess() {
  if (pid <= 0) return;
  kill(pid, SIGKILL);
  reap(*this);
}

ChildProcess start_child(const std::function<void()> &body) {
  ChildProcess child;
  const pid_t lab = getpid();
  child.pid = fork();
  if (child.pid < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot create a process");
  }
  if (child.pid > 0) return child;
  // The stack below belongs to the parent: never return from here.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  reset_child_signals();
  if (getppid() != lab) _exit(1);
  try {
    body();
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

int reap(ChildProcess &child) {
  int status = -1;
  pid_t reaped = -1;
  do {
    reaped = waitpid(child.pid, &status, 0);
  } while (reaped < 0 && errno == EINTR);
  child.pid = -1;
  return reaped > 0 ? status : -1;
}

}  // namespace lab
