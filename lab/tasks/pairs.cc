#include "tasks/pairs.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include "report/transport.h"
#include "tasks/compare.h"
#include "text/signals.h"

namespace lab {
namespace {

// A comparison under way: its process, and the result that it writes.
struct PairJob {
  const PairEntry *pair;
  pid_t pid;
  int pipe;
  Bytes result;
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

// The life of the process of a comparison. Nothing leaves it but by its end: what is behind it on the
// stack is the parent's.
[[noreturn]] void compare_in_process(const PairEntry &pair, int pipe) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  Bytes bytes;
  try {
    bytes = encode_result(compare_or_fail(pair));
  } catch (...) {  // interrupted, or no memory even for this
    _exit(1);
  }
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t written = write(pipe, bytes.data() + at, bytes.size() - at);
    if (written < 0 && errno != EINTR) _exit(1);
    at += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
  _exit(0);
}

PairJob start_job(const PairEntry &pair, const std::vector<PairJob> &others) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "no pipe for a pair");
  }
  std::fflush(stdout);
  const pid_t pid = fork();
  if (pid < 0) {
    const int problem = errno;
    close(ends[0]);
    close(ends[1]);
    throw std::system_error(problem, std::generic_category(), "no process for a pair");
  }
  if (pid == 0) {
    close(ends[0]);
    for (const PairJob &other : others) close(other.pipe);
    compare_in_process(pair, ends[1]);
  }
  close(ends[1]);
  return {&pair, pid, ends[0], {}};
}

// Take what a comparison wrote; true: it has ended.
bool read_job(PairJob &job) {
  uint8_t buffer[65536];
  const ssize_t got = read(job.pipe, buffer, sizeof buffer);
  if (got > 0) job.result.insert(job.result.end(), buffer, buffer + got);
  if (got > 0 || (got < 0 && errno == EINTR)) return false;
  close(job.pipe);
  waitpid(job.pid, nullptr, 0);
  return true;
}

void stop_jobs(std::vector<PairJob> &jobs) {
  for (const PairJob &job : jobs) {
    kill(job.pid, SIGKILL);
    waitpid(job.pid, nullptr, 0);
    close(job.pipe);
  }
  jobs.clear();
}

}  // namespace

void compare_all(const std::vector<PairEntry> &pairs,
                 const std::function<void(const PairResult &)> &listener) {
  const std::size_t at_once = std::max(1U, std::thread::hardware_concurrency());
  std::vector<PairJob> jobs;
  try {
    for (auto next = pairs.begin(); next != pairs.end() || !jobs.empty();) {
      while (next != pairs.end() && jobs.size() < at_once) jobs.push_back(start_job(*next++, jobs));
      std::vector<pollfd> ready;
      for (const PairJob &job : jobs) ready.push_back({job.pipe, POLLIN, 0});
      if (poll(ready.data(), ready.size(), -1) < 0 && errno != EINTR) break;
      if (interrupted()) throw Interrupted{};
      for (std::size_t i = jobs.size(); i-- > 0;) {
        if (ready[i].revents == 0 || !read_job(jobs[i])) continue;
        const auto result = decode_result(jobs[i].result);
        listener(result ? *result : make_failure(*jobs[i].pair, "the comparison died"));
        jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(i));
      }
    }
  } catch (...) {
    stop_jobs(jobs);
    throw;
  }
}

}  // namespace lab
