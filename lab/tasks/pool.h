// Processes that compare pairs of switches, each with two processes of switches, which are used
// again and again.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <memory>

#include "io/loop.h"
#include "sonic/limits.h"
#include "tasks/job.h"
#include "text/child.h"

namespace lab {

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

}  // namespace lab
