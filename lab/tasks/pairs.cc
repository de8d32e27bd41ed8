#include "tasks/pairs.h"

#include <algorithm>
#include <thread>

#include "report/transport.h"
#include "tasks/compare.h"
#include "text/child.h"
#include "text/wait.h"

namespace lab {
namespace {

// A comparison under way: its process, and the result that it writes.
struct PairJob {
  const PairEntry *pair;
  ChildProcess process;
};

PairResult compare_entry(const PairEntry &pair) {
  PairResult result{.name = pair.name, .errors = {}, .report = {}};
  Sides sides;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide read = read_side(pair.sources[i], i, Format::by_content);
    if (!read.errors.empty()) result.errors.push_back({read.side.source, std::move(read.errors)});
    sides[i] = std::move(read.side);
  }
  if (result.errors.empty()) result.report = compare(sides);
  return result;
}

PairResult make_failure(const PairEntry &pair, const std::string &problem) {
  InputError error;
  error.found = problem;
  return {.name = pair.name, .errors = {{pair.name, {error}}}, .report = {}};
}

PairResult compare_or_fail(const PairEntry &pair) {
  try {
    return compare_entry(pair);
  } catch (const std::bad_alloc &) {
    return make_failure(pair, "there is not enough memory");
  } catch (const std::exception &problem) {
    return make_failure(pair, printable(problem.what()));
  }
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs,
                 const std::function<void(const PairResult &)> &listener) {
  const std::size_t at_once = std::max(1U, std::thread::hardware_concurrency());
  std::vector<PairJob> jobs;
  for (auto next = pairs.begin(); next != pairs.end() || !jobs.empty();) {
    for (; next != pairs.end() && jobs.size() < at_once; ++next) {
      jobs.push_back({&*next, start_writer([&] { return encode_result(compare_or_fail(*next)); })});
    }
    std::vector<pollfd> ready;
    for (const PairJob &job : jobs) ready.push_back({job.process.output, POLLIN, 0});
    wait(ready, TimePoint::max());
    for (std::size_t i = jobs.size(); i-- > 0;) {
      if (ready[i].revents == 0 || !read_output(jobs[i].process)) continue;
      const auto result = decode_result(jobs[i].process.text);
      listener(result ? *result : make_failure(*jobs[i].pair, "the comparison died"));
      jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
}

}  // namespace lab
