#include <list>
#include <utility>

#include "sonic/feed.h"
#include "tasks/pool.h"

namespace lab {
namespace {

// Pairs in progress at once. The number is high because most may wait for servers that do not
// answer.
constexpr std::size_t max_pairs = 256;

// A comparison in progress.
struct PairTask {
  explicit PairTask(const PairEntry &entry) : pair(entry) {}

  const PairEntry &pair;
  std::array<std::optional<DatabaseFeed>, 2> feeds = {};
  bool is_queued = false;
};

struct PairsRun {
  const std::vector<PairEntry> &pairs;
  const CompareOptions &options;
  const ReadLimits &limits;
  const std::function<void(const PairResult &)> &listener;
  std::size_t started = 0;
  Loop loop = {};
  Admission admission{loop};
  Pool pool{loop, limits};
  std::list<PairTask> tasks = {};
};

void start_pairs(PairsRun &run);

void finish_pair(PairsRun &run, std::list<PairTask>::iterator task, CompareAnswer answer) {
  PairResult result{.name = task->pair.name};
  if (!answer.problem.empty()) {
    InputError error;
    error.found = answer.problem;
    result.errors.push_back({task->pair.name, {error}});
  }
  for (std::size_t i = 0; i < answer.sides.size(); ++i) {
    const auto &[source, source_errors] = task->pair.sources[i];
    const InputErrors &errors = source_errors.empty() ? answer.sides[i].errors : source_errors;
    if (!errors.empty()) result.errors.push_back({source.label, errors});
  }
  if (answer.report) result.report = std::move(*answer.report);
  run.tasks.erase(task);
  run.listener(result);
  start_pairs(run);
}

void queue_comparison(PairsRun &run, std::list<PairTask>::iterator task) {
  const auto make_job = [&run, task]() -> std::optional<CompareJob> {
    CompareJob job{.options = run.options};
    job.options.name = task->pair.name;
    for (std::size_t i = 0; i < job.sides.size(); ++i) {
      const auto &[source, errors] = task->pair.sources[i];
      if (!errors.empty()) continue;
      job.sides[i] = SideJob{source};
      if (!task->feeds[i]) continue;
      const Snapshot &snapshot = task->feeds[i]->database.snapshot;
      job.sides[i]->contents = snapshot.contents;
      job.sides[i]->errors = all_errors(snapshot);
    }
    return job;
  };
  run.pool.add({make_job,
                [&run, task](CompareAnswer answer) { finish_pair(run, task, std::move(answer)); }});
}

// Queues the comparison once all databases of the pair have been read or have failed.
void queue_if_read(PairsRun &run, std::list<PairTask>::iterator task) {
  for (const auto &feed : task->feeds) {
    if (feed && feed->database.snapshot.state == SourceState::connecting) return;
  }
  if (!std::exchange(task->is_queued, true)) queue_comparison(run, task);
}

void start_pair(PairsRun &run, const PairEntry &pair) {
  const auto task = run.tasks.emplace(run.tasks.end(), pair);
  for (std::size_t i = 0; i < task->feeds.size(); ++i) {
    const auto &[source, errors] = pair.sources[i];
    if (!errors.empty() || source.kind == Source::Kind::file) continue;
    task->feeds[i].emplace(run.admission, source, ReadIntervals{}, run.limits,
                           [&run, task] { queue_if_read(run, task); });
  }
  queue_if_read(run, task);
}

void start_pairs(PairsRun &run) {
  while (run.started < run.pairs.size() && run.tasks.size() < max_pairs) {
    start_pair(run, run.pairs[run.started++]);
  }
  if (run.tasks.empty()) run.loop.stop();
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs, const CompareOptions &options,
                 const ReadLimits &limits,
                 const std::function<void(const PairResult &)> &listener) {
  raise_file_limit();
  PairsRun run{pairs, options, limits, listener};
  start_pairs(run);
  run.loop.run();
}

}  // namespace lab
