#include "io/loop.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "text/wait.h"

namespace lab {

struct TimerHandle {
  uv_timer_t raw;
  Callback callback;
};

struct FileHandle {
  uv_poll_t raw;
  Callback callback;
  int events = 0;
};

struct SignalHandle {
  uv_signal_t raw;
  Callback callback;
};

namespace {

void check_uv(int result, const char *what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

// Call back from within libuv, through which no exception may pass.
template <class Handle>
void call_back(Handle *raw_handle) {
  Loop &loop = *static_cast<Loop *>(raw_handle->loop->data);
  try {
    // The callback may end its own record.
    const Callback callback = *static_cast<Callback *>(raw_handle->data);
    callback();
  } catch (...) {
    if (!loop.problem) loop.problem = std::current_exception();
    loop.stop();
  }
}

template <class Handle>
void close_handle(Handle *handle) {
  handle->raw.data = handle;
  uv_close(reinterpret_cast<uv_handle_t *>(&handle->raw),
           [](uv_handle_t *raw) { delete static_cast<Handle *>(raw->data); });
}

}  // namespace

Loop::Loop() : raw{} {
  // Without files for its pipes libuv ends the process.
  constexpr rlim_t least_files = 16;
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < least_files) {
    check_uv(-EMFILE, "no event loop");
  }
  check_uv(uv_loop_init(&raw), "no event loop");
  raw.data = this;
}

Loop::~Loop() {
  // The handles are being closed, and stop() may have been called.
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

void CloseHandle::operator()(TimerHandle *handle) const {
  close_handle(handle);
}

void CloseHandle::operator()(FileHandle *handle) const {
  uv_poll_stop(&handle->raw);  // now, as its file may be closed next
  close_handle(handle);
}

void CloseHandle::operator()(SignalHandle *handle) const {
  close_handle(handle);
}

Timer::Timer(Loop &loop, Callback callback) : handle(new TimerHandle{{}, std::move(callback)}) {
  uv_timer_init(&loop.raw, &handle->raw);
  handle->raw.data = &handle->callback;
}

void Timer::set(TimePoint due) {
  if (due == TimePoint::max()) {
    uv_timer_stop(&handle->raw);
  } else {
    set_after(due - Clock::now());
  }
}

void Timer::set_after(Clock::duration pause) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(pause);
  uv_update_time(handle->raw.loop);
  uv_timer_start(&handle->raw, call_back<uv_timer_t>,
                 static_cast<uint64_t>(std::max<int64_t>(left.count(), 0)), 0);
}

FileWatch::FileWatch(Loop &loop, int file, Callback callback) {
  auto made = std::make_unique<FileHandle>(FileHandle{{}, std::move(callback)});
  // Others may share the file, and libuv lets it return at once from then on.
  const int flags = fcntl(file, F_GETFL);
  check_uv(uv_poll_init(&loop.raw, &made->raw, file), "a file cannot be watched");
  fcntl(file, F_SETFL, flags);
  handle.reset(made.release());
  handle->raw.data = &handle->callback;
}

void FileWatch::wait_for(int events) {
  if (events == std::exchange(handle->events, events)) return;
  const auto ready = [](uv_poll_t *raw, int, int) { call_back(raw); };
  check_uv(events == 0 ? uv_poll_stop(&handle->raw) : uv_poll_start(&handle->raw, events, ready),
           "a file cannot be watched");
}

SignalWatch::SignalWatch(Loop &loop, int number, Callback callback)
    : handle(new SignalHandle{{}, std::move(callback)}) {
  uv_signal_init(&loop.raw, &handle->raw);
  handle->raw.data = &handle->callback;
  const auto take = [](uv_signal_t *raw, int) { call_back(raw); };
  check_uv(uv_signal_start(&handle->raw, take, number), "a signal cannot be watched");
}

void raise_file_limit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace lab
