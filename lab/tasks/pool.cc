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
#include "text/file.h"

namespace lab {

struct PoolWorker {
  ChildProcess process = {};
  Descriptor socket;
  std::optional<FileWatch> watch = {};
  std::optional<Timer> deadline = {};
  std::optional<PoolTask> task = {};
  int attempts = 0;
  Bytes output = {};  // the frame of the job
  std::size_t written = 0;
  Bytes input = {};

  void end() {
    watch.reset();
    socket.close();
    process = {};
  }
};

namespace {

// Of a job, in times of a reading.
constexpr int readings_of_job = 3;
constexpr std::size_t read_at_once = std::size_t{64} << 10;

void start(PoolWorker &worker) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "no socket for a process");
  }
  worker.socket = Descriptor(ends[0]);
  const Descriptor job_end(ends[1]);
  worker.process = start_child([&] {
    // Another end of a connection would keep it open; hiredis lets it be inherited.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    dup2(job_end, job_file);
    fcntl(job_file, F_SETFD, 0);
    execl("/proc/self/exe", "mcec-lab", pool_argument, nullptr);
    _exit(1);
  });
}

bool is_whole(const Bytes &frame) {
  uint32_t size = 0;
  if (frame.size() < sizeof size) return false;
  std::memcpy(&size, frame.data(), sizeof size);
  return frame.size() - sizeof size >= size;
}

// The worker is free before the task is done, which may add tasks.
void finish(Pool &pool, PoolWorker &worker, CompareAnswer answer) {
  worker.deadline->set(TimePoint::max());
  worker.output = {};
  worker.input = {};
  const auto done = std::move(worker.task->done);
  worker.task.reset();
  if (!pool.tasks.empty()) pool.timer.set(TimePoint{});
  done(std::move(answer));
}

void send_job(Pool &pool, PoolWorker &worker);

// The process of a job has gone.
void restart(Pool &pool, PoolWorker &worker) {
  worker.end();
  if (!worker.task) return;
  if (worker.attempts == most_attempts) {
    return finish(pool, worker, {.problem = "the process of the comparison died"});
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
  uint8_t bytes[read_at_once];
  const ssize_t got = recv(worker.socket, bytes, sizeof bytes, MSG_DONTWAIT);
  if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) return restart(pool, worker);
  if (got > 0) worker.input.insert(worker.input.end(), bytes, bytes + got);
  worker.watch->wait_for(worker.written < worker.output.size() ? UV_READABLE | UV_WRITABLE
                                                               : UV_READABLE);
  if (!worker.task || !is_whole(worker.input)) return;
  worker.input.erase(worker.input.begin(), worker.input.begin() + sizeof(uint32_t));
  std::optional<CompareAnswer> answer;
  try {
    answer = decode_answer(worker.input);
  } catch (const DecodeError &) {
    return restart(pool, worker);
  }
  finish(pool, worker, std::move(*answer));
}

void send_job(Pool &pool, PoolWorker &worker) {
  ++worker.attempts;
  worker.written = 0;
  worker.input.clear();
  if (worker.socket < 0) {
    try {
      start(worker);
    } catch (const std::system_error &problem) {
      worker.end();
      return finish(pool, worker, {.problem = problem.what()});
    }
    worker.watch.emplace(pool.loop, worker.socket, [&] { transfer(pool, worker); });
  }
  worker.watch->wait_for(UV_READABLE | UV_WRITABLE);
}

void give_up(Pool &pool, PoolWorker &worker) {
  worker.end();
  finish(pool, worker,
         {.problem = "the comparison did not end within " + seconds_text(pool.longest)});
}

// Give the free processes something to do.
void hand_out(Pool &pool) {
  while (!pool.tasks.empty()) {
    auto worker = pool.workers.begin();
    while (worker != pool.workers.end() && worker->task) ++worker;
    if (worker == pool.workers.end()) {
      if (pool.workers.size() == pool.most_workers) return;
      worker = pool.workers.emplace(pool.workers.end());
      worker->deadline.emplace(pool.loop, [&pool, &made = *worker] { give_up(pool, made); });
    }
    PoolTask task = std::move(pool.tasks.front());
    pool.tasks.pop_front();
    std::optional<CompareJob> job = task.make();
    if (!job) continue;
    worker->task = std::move(task);
    worker->output = make_frame(encode(*job));
    worker->attempts = 0;
    worker->deadline->set_after(pool.longest);
    send_job(pool, *worker);
  }
}

}  // namespace

Pool::Pool(Loop &of, const ReadLimits &limits)
    : loop(of),
      most_workers(std::max(1U, std::thread::hardware_concurrency())),
      longest(readings_of_job * limits.reading_time),
      timer(of, [this] { hand_out(*this); }) {}

Pool::~Pool() = default;

void Pool::add(PoolTask task) {
  tasks.push_back(std::move(task));
  timer.set(TimePoint{});
}

}  // namespace lab
