// Processes that compare pairs of switches, each with two processes of switches, which are used
// again and again.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <memory>

#include "io/loop.h"
#include "sonic/limits.h"
#include "sonic/snapshot.h"
#include "tasks/compare.h"
#include "text/child.h"

namespace lab {

// --- a comparison as a job, and what comes of it ---

// One side: rows that are known, or a file to be read.
struct SideJob {
  Source source;
  SharedContents contents = {};  // of a database
  InputErrors errors = {};       // of their reading
  bool is_watched = false;       // the file must be a regular one, and its contents are returned
};

struct CompareJob {
  std::array<std::optional<SideJob>, 2> sides = {};  // nothing: it is not known now
  CompareOptions options;
};

struct SideAnswer {
  InputErrors errors;
  // Of a watched file.
  std::string unreadable;   // not empty: why it cannot be read
  SharedContents contents;  // nullptr: it has errors, and no rows
};

struct CompareAnswer {
  std::string problem = {};  // not empty: it could not be done
  std::array<SideAnswer, 2> sides = {};
  std::optional<PairReport> report = {};
};

// --- the pool ---

// What a process of the pool is to do. `make` is called when one is free; nothing: there is nothing
// to do any more.
struct PoolTask {
  std::function<std::optional<CompareJob>()> make;
  std::function<void(CompareAnswer)> done;
};

struct PoolWorker;

struct Pool {
  // A process for each processor, as far as there are jobs. A job that takes longer than several
  // readings of a database is given up.
  Pool(Loop &loop, const ReadLimits &limits);
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;
  ~Pool();

  void add(PoolTask task);

  Loop &loop;
  std::size_t most_workers;
  std::chrono::milliseconds longest;  // of a job
  Timer timer;                        // of the next hand-out
  std::deque<PoolTask> tasks;
  std::list<PoolWorker> workers;
};

// --- of its processes ---

// A process of the pool is this program with this argument only, which then calls serve_jobs(): a
// copy of a large process would keep its memory.
constexpr char pool_argument[] = "--serve-jobs";
constexpr int job_file = 3;
int serve_jobs();

// A process can be killed for something that the job has no part in.
constexpr int most_attempts = 3;

Bytes encode(const CompareJob &job);

// Throws DecodeError.
CompareAnswer decode_answer(const Bytes &frame);

}  // namespace lab
