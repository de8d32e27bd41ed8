#include "text/child.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "text/wait.h"

namespace lab {

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept {
  std::swap(pid, other.pid);
  std::swap(output, other.output);
  std::swap(text, other.text);
  return *this;
}

ChildProcess::~ChildProcess() {
  if (pid <= 0) return;
  kill(pid, SIGKILL);
  reap(*this);
}

ChildProcess start_child(const std::function<void()> &life) {
  ChildProcess child;
  const pid_t lab = getpid();
  child.pid = fork();
  if (child.pid < 0) {
    throw std::system_error(errno, std::generic_category(), "no process can be made");
  }
  if (child.pid > 0) return child;
  // What is behind this on the stack is the lab's: nothing leaves but by the end of the process.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  leave_signals_to_the_lab();
  if (getppid() != lab) _exit(1);
  try {
    life();
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

ChildProcess start_writer(const std::function<std::string()> &work) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "no pipe can be made");
  }
  Descriptor reading(ends[0]);
  const Descriptor writing(ends[1]);
  ChildProcess child = start_child([&] {
    // Copies of the lab's files would keep connections open, and its event loop busy.
    const int output = dup2(writing, STDERR_FILENO + 1);
    close_range(STDERR_FILENO + 2, ~0U, 0);
    if (!write_all(output, work()).empty()) _exit(1);
  });
  child.output = std::move(reading);
  return child;
}

bool read_output(ChildProcess &child) {
  char buffer[65536];
  pollfd ready = {child.output, POLLIN, 0};
  while (child.output >= 0) {
    if (poll(&ready, 1, 0) <= 0) return false;
    const ssize_t got = read(child.output, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) return false;
    if (got > 0) {
      child.text.append(buffer, static_cast<std::size_t>(got));
    } else {
      child.output.close();
      reap(child);
    }
  }
  return true;
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
