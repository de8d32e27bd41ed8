#include "tasks/pairs.h"

#include <algorithm>
#include <list>
#include <tuple>

#include "sonic/feed.h"
#include "sonic/read_databases.h"
#include "tasks/pool.h"
#include "text/text.h"

namespace lab {
namespace {

// Pairs that are compared at once; nearly all may wait for servers that do not answer.
constexpr std::size_t most_pairs = 256;

// A comparison under way.
struct PairTask {
  explicit PairTask(const PairEntry &of) : pair(of) {}

  const PairEntry &pair;
  std::array<SideJob, 2> sides = {};
  std::array<InputErrors, 2> errors = {};  // of a source that cannot be read
  std::array<std::optional<DatabaseFeed>, 2> feeds = {};
};

struct PairsRun {
  const std::vector<PairEntry> &pairs;
  const Credentials &credentials;
  const CompareOptions &options;
  const ReadLimits &limits;
  const std::function<void(const PairResult &)> &listener;
  std::size_t begun = 0;
  Loop loop = {};
  Admission admission{loop};
  Pool pool{loop, limits, options.accept};
  std::list<PairTask> tasks = {};
};

void begin_pairs(PairsRun &run);

void report(PairsRun &run, std::list<PairTask>::iterator task, CompareAnswer answer) {
  PairResult result{.name = task->pair.name, .errors = {}, .report = {}, .matched = {}};
  if (!answer.problem.empty()) {
    InputError error;
    error.found = answer.problem;
    result.errors.push_back({task->pair.name, {error}});
  }
  for (std::size_t i = 0; i < task->sides.size(); ++i) {
    InputErrors &errors = task->errors[i].empty() ? answer.errors[i] : task->errors[i];
    if (!errors.empty()) result.errors.push_back({task->sides[i].source, std::move(errors)});
  }
  if (answer.comparison) {
    result.report = std::move(answer.comparison->report);
    result.matched = std::move(answer.comparison->matched);
  }
  run.tasks.erase(task);
  run.listener(result);
  begin_pairs(run);
}

// Both sides are read, or cannot be.
void compare(PairsRun &run, std::list<PairTask>::iterator task) {
  const auto make = [&run, task]() -> std::optional<CompareJob> {
    CompareJob job{.sides = {}, .options = run.options, .accept = {}};
    job.options.name = task->pair.name;
    for (std::size_t i = 0; i < job.sides.size(); ++i) {
      if (task->errors[i].empty()) job.sides[i] = task->sides[i];
    }
    return job;
  };
  run.pool.add(
      {make, [&run, task](CompareAnswer answer) { report(run, task, std::move(answer)); }});
}

// A database has taken a step.
void take_rows(PairsRun &run, std::list<PairTask>::iterator task, std::size_t side) {
  Snapshot &contents = snapshot(*task->feeds[side]->database);
  if (contents.state == SourceState::opening || task->sides[side].rows) return;
  ReadDatabase read = take_reading(contents);
  task->sides[side].rows = std::move(read.rows);
  task->sides[side].errors = std::move(read.errors);
  if (!read.lost.empty()) {
    task->errors[side] = {{0, 0, "", read.lost, "a configuration database"}};
  }
  for (std::size_t i = 0; i < task->feeds.size(); ++i) {
    if (task->feeds[i] && !task->sides[i].rows) return;
  }
  compare(run, task);
}

// The passwords of the environment are for two servers, and a list may name any: none is sent.
void begin(PairsRun &run, const PairEntry &pair) {
  const auto task = run.tasks.emplace(run.tasks.end(), pair);
  for (std::size_t i = 0; i < task->sides.size(); ++i) {
    ParsedSource parsed = parse_source(pair.sources[i], {});
    SideJob &side = task->sides[i];
    side.source = printable(parsed.source.shown);
    task->errors[i] = std::move(parsed.errors);
    if (!task->errors[i].empty()) continue;
    if (parsed.source.kind == Source::Kind::file) {
      std::tie(side.path, side.name_space) = split_namespace(parsed.source.place, pair.name_space);
    } else {
      apply_credentials(run.credentials, parsed.source);
      task->feeds[i].emplace(run.admission, parsed.source, ReadIntervals{}, run.limits,
                             [&run, task, i] { take_rows(run, task, i); });
    }
  }
  if (!task->feeds[0] && !task->feeds[1]) compare(run, task);
}

void begin_pairs(PairsRun &run) {
  while (run.begun < run.pairs.size() && run.tasks.size() < most_pairs) {
    begin(run, run.pairs[run.begun++]);
  }
  if (run.tasks.empty()) run.loop.stop();
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs, const Credentials &credentials,
                 const CompareOptions &options, const ReadLimits &limits,
                 const std::function<void(const PairResult &)> &listener) {
  raise_file_limit();
  PairsRun run{pairs, credentials, options, limits, listener};
  begin_pairs(run);
  run.loop.run();
}

}  // namespace lab
