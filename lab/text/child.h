// Child processes.
#pragma once

#include <sys/types.h>

#include <functional>

namespace lab {

// A child process that is killed with this record, and when the lab exits.
struct ChildProcess {
  pid_t pid = -1;

  ChildProcess() = default;
  ChildProcess(ChildProcess &&other) noexcept { *this = std::move(other); }
  ChildProcess &operator=(ChildProcess &&other) noexcept;
  ~ChildProcess();
};

// Runs a function in a new process, which then exits: with status 0, or 1 after an exception.
// Throws std::system_error.
ChildProcess start_child(const std::function<void()> &body);

// Waits for the process to exit. Returns its status as waitpid() does, -1 on error.
int reap(ChildProcess &child);

}  // namespace lab
