#include <list>
#include <utility>

#include "sonic/feed.h"
#include "tasks/pool.h"

namespace lab {
namespace {

// Pairs that are compared at once; nearly all may wait for servers that do not answer.
constexpr std::size_t most_pairs = 256;

// A comparison under way.
struct PairTask {
  explicit PairTask(const PairEntry &of) : pair(of) {}

  const PairEntry &pair;
  std::array<std::optional<DatabaseFeed>, 2> feeds = {};
  bool is_queued = false;
};

struct PairsRun {
  const std::vector<PairEntry> &pairs;
  const CompareOptions &options;
  const ReadLimits &limits;
  const std::function<void(const PairResult &)> &listener;
  std::size_t begun = 0;
  Loop loop = {};
  Admission admission{loop};
  Pool pool{loop, limits};
  std::list<PairTask> tasks = {};
};

void begin_pairs(PairsRun &run);

void report(PairsRun &run, std::list<PairTask>::iterator task, CompareAnswer answer) {
  PairResult result{.name = task->pair.name};
  if (!answer.problem.empty()) {
    InputError error;
    error.found = answer.problem;
    result.errors.push_back({task->pair.name, {error}});
  }
  for (std::size_t i = 0; i < answer.sides.size(); ++i) {
    const auto &[source, unusable] = task->pair.sources[i];
    const InputErrors &errors = unusable.empty() ? answer.sides[i].errors : unusable;
    if (!errors.empty()) result.errors.push_back({source.label, errors});
  }
  if (answer.report) result.report = std::move(*answer.report);
  run.tasks.erase(task);
  run.listener(result);
  begin_pairs(run);
}

// What can be read from databases is read.
void compare(PairsRun &run, std::list<PairTask>::iterator task) {
  const auto make = [&run, task]() -> std::optional<CompareJob> {
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
  run.pool.add(
      {make, [&run, task](CompareAnswer answer) { report(run, task, std::move(answer)); }});
}

// Queues the comparison when no database of the pair is being read any more.
void compare_if_read(PairsRun &run, std::list<PairTask>::iterator task) {
  for (const auto &feed : task->feeds) {
    if (feed && feed->database.snapshot.state == SourceState::connecting) return;
  }
  if (!std::exchange(task->is_queued, true)) compare(run, task);
}

void begin(PairsRun &run, const PairEntry &pair) {
  const auto task = run.tasks.emplace(run.tasks.end(), pair);
  for (std::size_t i = 0; i < task->feeds.size(); ++i) {
    const auto &[source, errors] = pair.sources[i];
    if (!errors.empty() || source.kind == Source::Kind::file) continue;
    task->feeds[i].emplace(run.admission, source, ReadIntervals{}, run.limits,
                           [&run, task] { compare_if_read(run, task); });
  }
  compare_if_read(run, task);
}

void begin_pairs(PairsRun &run) {
  while (run.begun < run.pairs.size() && run.tasks.size() < most_pairs) {
    begin(run, run.pairs[run.begun++]);
  }
  if (run.tasks.empty()) run.loop.stop();
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs, const CompareOptions &options,
                 const ReadLimits &limits,
                 const std::function<void(const PairResult &)> &listener) {
  raise_file_limit();
  PairsRun run{pairs, options, limits, listener};
  begin_pairs(run);
  run.loop.run();
}

}  // namespace lab
