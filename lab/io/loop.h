// The event loop of libuv: callbacks for timers and files, which end with their records.
//
// An exception of a callback ends run(), which throws it.
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
  ~Loop();  // after all records of its handles

  // Until stop() is called, in a callback. Throws Interrupted when a signal asks the lab to stop.
  void run();
  void stop();
};

struct LoopHandle {
  uv_any_handle raw;
  Callback callback;
  int events = 0;  // that a file is waited for
};

struct CloseHandle {
  void operator()(LoopHandle *handle) const;
};

using OpenHandle = std::unique_ptr<LoopHandle, CloseHandle>;

// Calls back at a time point, once each time that it is set.
struct Timer {
  Timer(Loop &loop, Callback callback);

  void set(TimePoint due);  // TimePoint::max(): never
  void set_after(Clock::duration pause);

  OpenHandle handle;
};

// Calls back whenever a file is ready. The record ends before the file is closed.
struct FileWatch {
  FileWatch(Loop &loop, int file, Callback callback);

  void wait_for(int events);  // UV_READABLE, UV_WRITABLE, both, or 0: nothing

  OpenHandle handle;
};

// Calls back when the process gets a signal, which then does nothing else.
struct SignalWatch {
  SignalWatch(Loop &loop, int number, Callback callback);

  OpenHandle handle;
};

// Let the process have as many open files as it may.
void raise_file_limit();

}  // namespace lab
