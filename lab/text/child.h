// Processes of the lab's own.
#pragma once

#include <sys/types.h>

#include <functional>

namespace lab {

// A process that ends with this record, and with the lab.
struct ChildProcess {
  pid_t pid = -1;

  ChildProcess() = default;
  ChildProcess(ChildProcess &&other) noexcept { *this = std::move(other); }
  ChildProcess &operator=(ChildProcess &&other) noexcept;
  ~ChildProcess();
};

// Call a function in a new process, which then ends, with status 1 after an exception. Throws
// std::system_error.
ChildProcess start_child(const std::function<void()> &life);

// Wait for the end of a process; its status as waitpid() has it, less than 0: it is gone already.
int reap(ChildProcess &child);

}  // namespace lab
