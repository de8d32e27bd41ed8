#include "tasks/pool.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include "pair/wire.h"
#include "text/child.h"
#include "text/file.h"

namespace lab {

struct PoolWorker {
  ChildProcess process = {};
  Descriptor socket;
  std::optional<FileWatch> watch = {};
  std::optional<Timer> deadline = {};
  std::optional<PoolTask> task = {};
  int attempts = 0;
  Bytes output = {};  // the encoded job
  std::size_t written = 0;
  Bytes input = {};

  void end() {
    watch.reset();
    socket.close();
    process = {};
  }
};

namespace {

// The time limit of a job, as a multiple of the one for reading a database.
constexpr int job_time_factor = 3;
constexpr std::size_t receive_bytes = std::size_t{64} << 10;

void start_worker(PoolWorker &worker) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot create a socket for a process");
  }
  worker.socket = Descriptor(ends[0]);
  const Descriptor job_end(ends[1]);
  worker.process = start_child([&] {
    // hiredis does not set CLOEXEC; an inherited descriptor would keep a connection open.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    dup2(job_end, job_file);
    fcntl(job_file, F_SETFD, 0);
    execl("/proc/self/exe", "mcec-lab", pool_argument, nullptr);
    _exit(1);
  });
}

bool is_complete_frame(const Bytes &frame) {
  uint32_t size = 0;
  if (frame.size() < sizeof size) return false;
  std::memcpy(&size, frame.data(), sizeof size);
  return frame.size() - sizeof size >= size;
}

// Frees the worker before it calls `on_done`, which may add tasks.
void finish_task(Pool &pool, PoolWorker &worker, CompareAnswer answer) {
  worker.deadline->set(TimePoint::max());
  worker.output = {};
  worker.input = {};
  const auto on_done = std::move(worker.task->on_done);
  worker.task.reset();
  if (!pool.tasks.empty()) pool.timer.set(TimePoint{});
  on_done(std::move(answer));
}

void send_job(Pool &pool, PoolWorker &worker);

// Called when the process of a worker has died or violated the protocol.
void restart(Pool &pool, PoolWorker &worker) {
  worker.end();
  if (!worker.task) return;
  if (worker.attempts == max_attempts) {
    return finish_task(pool, worker, {.problem = "the comparison process died"});
  }
  send_job(pool, worker);
}

void transfer(Pool &pool, PoolWorker &worker) {
  if (worker.written < worker.output.size()) {
    const ssize_t sent = send(worker.socket, worker.output.data() + worker.written,
                              worker.output.size() - worker.written, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) return restart(pool, worker);
    if (sent > 0) worker.written += static_cast<std::size_t>(sent);
  }
  uint8_t bytes[receive_bytes];
  const ssize_t received = recv(worker.socket, bytes, sizeof bytes, MSG_DONTWAIT);
  if (received == 0 || (received < 0 && errno != EAGAIN && errno != EINTR)) {
    return restart(pool, worker);
  }
  if (received > 0) worker.input.insert(worker.input.end(), bytes, bytes + received);
  worker.watch->wait_for(worker.written < worker.output.size() ? UV_READABLE | UV_WRITABLE
                                                               : UV_READABLE);
  if (!worker.task || !is_complete_frame(worker.input)) return;
  worker.input.erase(worker.input.begin(), worker.input.begin() + sizeof(uint32_t));
  std::optional<CompareAnswer> answer;
  try {
    answer = decode_answer(worker.input);
  } catch (const DecodeError &) {
    return restart(pool, worker);
  }
  finish_task(pool, worker, std::move(*answer));
}

void send_job(Pool &pool, PoolWorker &worker) {
  ++worker.attempts;
  worker.written = 0;
  worker.input.clear();
  if (worker.socket < 0) {
    try {
      start_worker(worker);
    } catch (const std::system_error &problem) {
      worker.end();
      return finish_task(pool, worker, {.problem = problem.what()});
    }
    worker.watch.emplace(pool.loop, worker.socket, [&] { transfer(pool, worker); });
  }
  worker.watch->wait_for(UV_READABLE | UV_WRITABLE);
}

void abort_job(Pool &pool, PoolWorker &worker) {
  worker.end();
  finish_task(pool, worker,
              {.problem = "the comparison did not end within " + seconds_text(pool.job_timeout)});
}

// Assigns waiting tasks to free workers, and starts workers up to the limit.
void assign_tasks(Pool &pool) {
  while (!pool.tasks.empty()) {
    auto worker = pool.workers.begin();
    while (worker != pool.workers.end() && worker->task) ++worker;
    if (worker == pool.workers.end()) {
      if (pool.workers.size() == pool.max_workers) return;
      worker = pool.workers.emplace(pool.workers.end());
      worker->deadline.emplace(pool.loop, [&pool, &added = *worker] { abort_job(pool, added); });
    }
    PoolTask task = std::move(pool.tasks.front());
    pool.tasks.pop_front();
    std::optional<CompareJob> job = task.make_job();
    if (!job) continue;
    worker->task = std::move(task);
    worker->output = make_frame(encode_job(*job));
    worker->attempts = 0;
    worker->deadline->set_after(pool.job_timeout);
    send_job(pool, *worker);
  }
}

}  // namespace

Pool::Pool(Loop &event_loop, const ReadLimits &limits)
    : loop(event_loop),
      max_workers(std::max(1U, std::thread::hardware_concurrency())),
      job_timeout(job_time_factor * limits.reading_time),
      timer(event_loop, [this] { assign_tasks(*this); }) {}

Pool::~Pool() = default;

void Pool::add(PoolTask task) {
  tasks.push_back(std::move(task));
  timer.set(TimePoint{});
}

}  // namespace lab
