#include "io/loop.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "text/wait.h"

namespace lab {
namespace {

void check_uv(int result, const char *what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

// Runs a callback from within libuv. Exceptions must not pass through its C code.
template <class Raw>
void call_back(Raw *raw) {
  Loop &loop = *static_cast<Loop *>(raw->loop->data);
  try {
    // A copy, because the callback may destroy its own record.
    const Callback callback = static_cast<LoopHandle *>(raw->data)->callback;
    callback();
  } catch (...) {
    if (!loop.problem) loop.problem = std::current_exception();
    loop.stop();
  }
}

}  // namespace

Loop::Loop() : raw{} {
  // libuv aborts the process if it cannot create its pipes.
  constexpr rlim_t least_files = 16;
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < least_files) {
    check_uv(-EMFILE, "cannot create an event loop");
  }
  check_uv(uv_loop_init(&raw), "cannot create an event loop");
  raw.data = this;
}

Loop::~Loop() {
  // Handles are still closing, and a pending stop() ends uv_run() early.
  while (uv_loop_close(&raw) == UV_EBUSY) uv_run(&raw, UV_RUN_NOWAIT);
}

void Loop::run() {
  FileWatch signals(*this, stop_signal_file(), [] {
    if (interrupted()) throw Interrupted{};
  });
  signals.wait_for(UV_READABLE);
  uv_run(&raw, UV_RUN_DEFAULT);
  if (problem) std::rethrow_exception(std::exchange(problem, nullptr));
}

void Loop::stop() {
  uv_stop(&raw);
}

void CloseHandle::operator()(LoopHandle *handle) const {
  uv_close(&handle->raw.handle,
           [](uv_handle_t *raw) { delete static_cast<LoopHandle *>(raw->data); });
}

Timer::Timer(Loop &loop, Callback callback) : handle(new LoopHandle{{}, std::move(callback)}) {
  uv_timer_init(&loop.raw, &handle->raw.timer);
  handle->raw.handle.data = handle.get();
}

void Timer::set(TimePoint due) {
  if (due == TimePoint::max()) {
    uv_timer_stop(&handle->raw.timer);
  } else {
    set_after(due - Clock::now());
  }
}

void Timer::set_after(Clock::duration pause) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(pause);
  uv_update_time(handle->raw.handle.loop);
  uv_timer_start(&handle->raw.timer, call_back<uv_timer_t>,
                 static_cast<uint64_t>(std::max<int64_t>(left.count(), 0)), 0);
}

FileWatch::FileWatch(Loop &loop, int file, Callback callback) {
  auto new_handle = std::make_unique<LoopHandle>(LoopHandle{{}, std::move(callback)});
  // libuv makes the file nonblocking, also for other processes that share it: restore its flags.
  const int flags = fcntl(file, F_GETFL);
  check_uv(uv_poll_init(&loop.raw, &new_handle->raw.poll, file), "cannot watch a file");
  fcntl(file, F_SETFL, flags);
  handle.reset(new_handle.release());
  handle->raw.handle.data = handle.get();
}

void FileWatch::wait_for(int events) {
  if (events == std::exchange(handle->events, events)) return;
  const auto ready = [](uv_poll_t *raw, int, int) { call_back(raw); };
  check_uv(uv_poll_start(&handle->raw.poll, events, ready), "cannot watch a file");
}

SignalWatch::SignalWatch(Loop &loop, int number, Callback callback)
    : handle(new LoopHandle{{}, std::move(callback)}) {
  uv_signal_init(&loop.raw, &handle->raw.signal);
  handle->raw.handle.data = handle.get();
  const auto take = [](uv_signal_t *raw, int) { call_back(raw); };
  check_uv(uv_signal_start(&handle->raw.signal, take, number), "cannot watch a signal");
}

void raise_file_limit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace lab
