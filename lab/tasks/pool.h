// A pool of worker processes that compare pairs. Each worker has two switch processes of its own,
// which it reuses for all of its jobs.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <memory>

#include "io/loop.h"
#include "sonic/limits.h"
#include "sonic/snapshot.h"
#include "tasks/compare.h"

namespace lab {

// --- jobs and answers ---

// One side of a job: the contents of a database, or a file for the worker to read.
struct SideJob {
  Source source;
  SharedContents contents = {};  // of a database
  InputErrors errors = {};       // of reading the database
  bool is_watched = false;       // the file must be a regular one, and its contents are returned
};

struct CompareJob {
  std::array<std::optional<SideJob>, 2> sides = {};  // nullopt: unknown, nothing is compared
  CompareOptions options;
};

struct SideAnswer {
  InputErrors errors;
  // Only of a watched file.
  std::string unreadable;   // why it cannot be read; empty if it can
  SharedContents contents;  // nullptr if the file has errors and no rows
};

struct CompareAnswer {
  std::string problem = {};  // why the job failed; empty if it did not
  std::array<SideAnswer, 2> sides = {};
  std::optional<PairReport> report = {};
};

// --- the pool ---

// `make_job` is called when a worker is free; if it returns nullopt, the task is dropped.
struct PoolTask {
  std::function<std::optional<CompareJob>()> make_job;
  std::function<void(CompareAnswer)> on_done;
};

struct PoolWorker;

struct Pool {
  // Starts workers as tasks need them, at most one per processor. Aborts a job that takes longer
  // than a multiple of the time limit for reading a database.
  Pool(Loop &loop, const ReadLimits &limits);
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;
  ~Pool();

  void add(PoolTask task);

  Loop &loop;
  std::size_t max_workers;
  std::chrono::milliseconds job_timeout;
  Timer timer;  // calls assign_tasks()
  std::deque<PoolTask> tasks;
  std::list<PoolWorker> workers;
};

// --- workers ---

// A worker is this program, executed with this argument only: a plain fork would keep a copy of the
// parent's memory.
constexpr char pool_argument[] = "--serve-jobs";

// The descriptor of a worker's socket.
constexpr int job_file = 3;

// Executes jobs until the socket closes. Returns the exit status of the worker.
int serve_jobs();

// A process can die for reasons unrelated to its job (the OOM killer), so jobs are retried.
constexpr int max_attempts = 3;

Bytes encode_job(const CompareJob &job);

// Throws DecodeError.
CompareAnswer decode_answer(const Bytes &frame);

}  // namespace lab
