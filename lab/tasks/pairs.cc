#include "tasks/pairs.h"

#include <algorithm>
#include <thread>

#include "report/transport.h"
#include "tasks/compare.h"
#include "text/child.h"
#include "text/wait.h"

namespace lab {
namespace {

// Of a comparison, in times of a reading.
constexpr int readings_of_comparison = 3;

// A comparison under way.
struct PairJob {
  const PairEntry *pair;
  TimePoint deadline;
  ChildProcess process;
};

// The passwords of the environment are for two servers, and a list may name any: none is sent.
PairResult compare_entry(const PairEntry &pair, CompareOptions options, const ReadLimits &limits) {
  PairResult result{.name = pair.name, .errors = {}, .report = {}, .matched = {}};
  std::vector<ReadSide> both =
      read_sides({{pair.sources[0], {}, pair.name_space}, {pair.sources[1], {}, pair.name_space}},
                 Format::by_content, limits);
  Sides sides;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide &read = both[i];
    if (!read.errors.empty()) result.errors.push_back({read.side.source, std::move(read.errors)});
    sides[i] = std::move(read.side);
  }
  if (!result.errors.empty()) return result;
  options.name = pair.name;
  Comparison comparison = compare(sides, options);
  result.report = std::move(comparison.report);
  result.matched = std::move(comparison.matched);
  return result;
}

PairResult make_failure(const PairEntry &pair, const std::string &problem) {
  InputError error;
  error.found = problem;
  return {.name = pair.name, .errors = {{pair.name, {error}}}, .report = {}, .matched = {}};
}

PairResult compare_or_fail(const PairEntry &pair, const CompareOptions &options,
                           const ReadLimits &limits) {
  try {
    return compare_entry(pair, options, limits);
  } catch (const std::bad_alloc &) {
    return make_failure(pair, "there is not enough memory");
  } catch (const std::exception &problem) {
    return make_failure(pair, printable(problem.what()));
  }
}

// Take the results of the comparisons that have ended, or whose time is up.
void take_results(std::vector<PairJob> &jobs, const ReadLimits &limits,
                  const std::function<void(const PairResult &)> &listener) {
  std::vector<pollfd> ready;
  TimePoint until = TimePoint::max();
  for (const PairJob &job : jobs) {
    ready.push_back({job.process.output, POLLIN, 0});
    until = std::min(until, job.deadline);
  }
  wait(ready, until);
  for (std::size_t i = jobs.size(); i-- > 0;) {
    PairJob &job = jobs[i];
    if (ready[i].revents != 0 && read_output(job.process)) {
      const auto result = decode_result(job.process.text);
      listener(result ? *result : make_failure(*job.pair, "the comparison died"));
    } else if (Clock::now() >= job.deadline) {
      const auto time = readings_of_comparison * limits.reading_time;
      listener(make_failure(*job.pair, "the comparison did not end within " + seconds_text(time)));
    } else {
      continue;
    }
    jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs, const CompareOptions &options,
                 const ReadLimits &limits,
                 const std::function<void(const PairResult &)> &listener) {
  const std::size_t at_once = std::max(1U, std::thread::hardware_concurrency());
  std::vector<PairJob> jobs;
  for (auto next = pairs.begin(); next != pairs.end() || !jobs.empty();) {
    for (; next != pairs.end() && jobs.size() < at_once; ++next) {
      const PairEntry &pair = *next;
      jobs.push_back(
          {&pair, Clock::now() + readings_of_comparison * limits.reading_time,
           start_writer([&] { return encode_result(compare_or_fail(pair, options, limits)); })});
    }
    take_results(jobs, limits, listener);
  }
}

}  // namespace lab
