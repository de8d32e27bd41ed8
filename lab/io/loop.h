// An event loop on libuv. A timer or a watch calls back until its record is destroyed.
//
// run() rethrows the exception of a callback.
#pragma once

#include <uv.h>

#include <exception>
#include <functional>
#include <memory>

#include "text/wait.h"

namespace lab {

using Callback = std::function<void()>;

struct Loop {
  uv_loop_t raw;
  std::exception_ptr problem;

  Loop();
  Loop(const Loop &) = delete;
  Loop &operator=(const Loop &) = delete;
  ~Loop();  // destroy all timers and watches first

  // Returns after a callback called stop(). Throws Interrupted when a signal stops the lab.
  void run();
  void stop();
};

struct LoopHandle {
  uv_any_handle raw;
  Callback callback;
  int events = 0;  // of a FileWatch
};

struct CloseHandle {
  void operator()(LoopHandle *handle) const;
};

using OpenHandle = std::unique_ptr<LoopHandle, CloseHandle>;

// Calls back once after each set().
struct Timer {
  Timer(Loop &loop, Callback callback);

  void set(TimePoint due);  // TimePoint::max(): never
  void set_after(Clock::duration pause);

  OpenHandle handle;
};

// Calls back when a file is ready. Destroy it before the file is closed.
struct FileWatch {
  FileWatch(Loop &loop, int file, Callback callback);

  void wait_for(int events);  // UV_READABLE and UV_WRITABLE, or one of them

  OpenHandle handle;
};

// Calls back when the process receives a signal, in place of its default action.
struct SignalWatch {
  SignalWatch(Loop &loop, int number, Callback callback);

  OpenHandle handle;
};

// Raises the limit of open files to the hard limit.
void raise_file_limit();

}  // namespace lab
