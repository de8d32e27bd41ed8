// Many pairs at once: a process for each comparison, as many at a time as there are processors.

#include <fmt/core.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>
#include <map>
#include <thread>

#include "cli/commands.h"
#include "cli/pair_list.h"
#include "output/told.h"
#include "sonic/source.h"
#include "switch/names.h"
#include "tasks/compare.h"
#include "text/wait.h"
#include "text/yaml.h"

namespace lab {
namespace {

// A comparison under way: its process, and the document that it writes.
struct Job {
  const PairLine *pair;
  pid_t pid;
  int pipe;
  TimePoint deadline;
  std::string document;
};

// What the comparisons came to.
struct Tally {
  std::size_t agree = 0;
  std::vector<std::string> differing;  // a line for each pair
  std::size_t not_compared = 0;
  Status status = agreed;
};

// Of a comparison, in times of a reading.
constexpr int readings_of_comparison = 3;

// The document of a pair: that of a comparison, or its errors, under its name. The passwords of the
// environment are for two servers, and a list may name any.
Json document_of(const PairLine &pair, const ReadLimits &limits) {
  Json told = {{"pair", pair.name}, {"version", 1}};
  Sides sides;
  Json errors = Json::array();
  std::vector<ReadSide> both =
      read_sides({{pair.sources[0], {}}, {pair.sources[1], {}}}, Format::by_content, limits);
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide &read = both[i];
    for (Json &error : errors_to_json(read.side.source, read.errors)) {
      errors.push_back(std::move(error));
    }
    sides[i] = std::move(read.side);
  }
  if (!errors.empty()) {
    told["errors"] = std::move(errors);
  } else {
    told.update(compare(sides));
  }
  return told;
}

Json failure_of(const PairLine &pair, const std::string &problem) {
  return {
      {"pair", pair.name},
      {"version", 1},
      {"errors", {{{"source", pair.name}, {"where", ""}, {"found", problem}, {"expected", ""}}}}};
}

std::string document_text(const PairLine &pair, const ReadLimits &limits) {
  try {
    return document_of(pair, limits).dump(-1, ' ', false, Json::error_handler_t::replace);
  } catch (const std::bad_alloc &) {
    return failure_of(pair, "there is not enough memory").dump();
  } catch (const std::exception &problem) {
    return failure_of(pair, printable(problem.what())).dump();
  }
}

// The life of the process of a comparison. Nothing leaves it but by its end: what is behind it on the
// stack is the parent's.
[[noreturn]] void compare_in_process(const PairLine &pair, const ReadLimits &limits, int pipe) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::string text;
  try {
    text = document_text(pair, limits);
  } catch (...) {  // interrupted, or no memory even for this
    _exit(wrong);
  }
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t written = write(pipe, text.data() + at, text.size() - at);
    if (written < 0 && errno != EINTR) _exit(wrong);
    at += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
  _exit(0);
}

Job start(const PairLine &pair, const ReadLimits &limits, const std::vector<Job> &others) {
  int ends[2];
  if (pipe(ends) != 0)
    throw std::system_error(errno, std::generic_category(), "no pipe for a pair");
  std::fflush(stdout);
  const pid_t pid = fork();
  if (pid < 0) {
    close(ends[0]);
    close(ends[1]);
    throw std::system_error(errno, std::generic_category(), "no process for a pair");
  }
  if (pid == 0) {
    close(ends[0]);
    for (const Job &other : others) close(other.pipe);
    compare_in_process(pair, limits, ends[1]);
  }
  close(ends[1]);
  return {&pair, pid, ends[0], Clock::now() + readings_of_comparison * limits.reading_time, ""};
}

// "mst-region-name (1), ifi-port-guard (3)".
std::string differences_text(const Json &checks) {
  std::map<std::string, std::size_t> counts;
  std::size_t missing = 0;
  for (const Json &check : checks) {
    if (check.contains("only")) ++missing;
    for (const std::string &key : differing(check)) counts[key] += check.contains("only") ? 0 : 1;
  }
  std::string text;
  for (const std::string &key : parameter_keys()) {
    if (counts[key] == 0) continue;
    text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", key, counts[key]);
  }
  if (missing > 0) {
    text += fmt::format("{}channels on one side only ({})", text.empty() ? "" : ", ", missing);
  }
  return text.empty() ? "spanning tree is off on one side" : text;
}

// A line for a pair, and what it adds to the whole.
void tell(const Json &told, const Arguments &arguments, const Layout &layout, Tally &tally) {
  const std::string name = told["pair"];
  Cell said;
  if (told.contains("errors")) {
    ++tally.not_compared;
    tally.status = wrong;
    const Json &first = told["errors"][0];
    const std::string place = first["where"];
    const std::size_t more = told["errors"].size() - 1;
    said = {fmt::format("NOT COMPARED: {}: {}{}{}", first["source"].get<std::string>(),
                        place.empty() ? "" : place + " ", first["found"].get<std::string>(),
                        more > 0 ? fmt::format(" and {} more", more) : ""),
            Colour::yellow};
  } else if (told["agree"]) {
    ++tally.agree;
    said = {"agrees", Colour::green};
  } else {
    tally.status = std::max(tally.status, disagreed);
    said = {"DIFFERENT: " + differences_text(told["checks"]), Colour::red};
    tally.differing.push_back(name + ": " + differences_text(told["checks"]));
  }
  if (arguments.json) {
    fmt::print("{}\n", told.dump());
    std::fflush(stdout);
  } else {
    put_line(name + ": " + coloured(said.text, said.colour, layout));
  }
}

// Take what a comparison wrote; true: it has ended.
bool take(Job &job) {
  char buffer[65536];
  const ssize_t got = read(job.pipe, buffer, sizeof buffer);
  if (got > 0) job.document.append(buffer, static_cast<std::size_t>(got));
  if (got > 0 || (got < 0 && errno == EINTR)) return false;
  close(job.pipe);
  waitpid(job.pid, nullptr, 0);
  return true;
}

void stop(const Job &job) {
  kill(job.pid, SIGKILL);
  waitpid(job.pid, nullptr, 0);
  close(job.pipe);
}

Json result_of(const Job &job) {
  const Json told = Json::parse(job.document, nullptr, false);
  return told.is_object() ? told : failure_of(*job.pair, "the comparison died");
}

// Take the results of the comparisons that have ended, or whose time is up.
void take_results(std::vector<Job> &jobs, const ReadLimits &limits,
                  const std::function<void(const Json &)> &tell_result) {
  std::vector<pollfd> ready;
  TimePoint until = TimePoint::max();
  for (const Job &job : jobs) {
    ready.push_back({job.pipe, POLLIN, 0});
    until = std::min(until, job.deadline);
  }
  wait(ready, until);
  for (std::size_t i = jobs.size(); i-- > 0;) {
    const Job &job = jobs[i];
    if (ready[i].revents != 0 && take(jobs[i])) {
      tell_result(result_of(job));
    } else if (Clock::now() >= job.deadline) {
      stop(job);
      const auto time = readings_of_comparison * limits.reading_time;
      tell_result(failure_of(*job.pair, "the comparison did not end within " + seconds_text(time)));
    } else {
      continue;
    }
    jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

void compare_all(const std::vector<PairLine> &pairs, const Arguments &arguments, Tally &tally) {
  const std::size_t at_once = std::max(1U, std::thread::hardware_concurrency());
  const Layout layout = standard_layout(arguments.no_color);
  const ReadLimits limits = limits_of(arguments);
  std::vector<Job> jobs;
  try {
    for (auto next = pairs.begin(); next != pairs.end() || !jobs.empty();) {
      while (next != pairs.end() && jobs.size() < at_once) {
        jobs.push_back(start(*next++, limits, jobs));
      }
      take_results(jobs, limits, [&](const Json &told) { tell(told, arguments, layout, tally); });
    }
  } catch (...) {
    for (const Job &job : jobs) stop(job);
    throw;
  }
}

}  // namespace

Status compare_pairs(const Arguments &arguments) {
  if (!arguments.left.empty() || !arguments.fix.first.empty() || !arguments.html.empty()) {
    print_error(
        "mcec-lab compare: --pairs stands alone; expected no sources, no --patch and no --html");
    return wrong;
  }
  InputErrors errors;
  const std::string &path = arguments.pairs;
  const std::string text = file_text(path, errors);
  std::vector<PairLine> pairs;
  if (errors.empty()) pairs = read_pair_list(text, path.substr(0, path.rfind('/') + 1), errors);
  const std::string source = hide_login(path);
  print_errors(source, errors);
  Tally tally;
  if (!errors.empty()) {
    tally.status = wrong;
    if (arguments.json) {
      fmt::print("{}\n", Json({{"version", 1}, {"errors", errors_to_json(source, errors)}}).dump());
    }
  }
  if (pairs.empty()) return wrong;
  compare_all(pairs, arguments, tally);
  if (arguments.json) return tally.status;
  put_line(fmt::format("{} pairs: {} agree, {} differ, {} not compared", pairs.size(), tally.agree,
                       tally.differing.size(), tally.not_compared));
  for (const std::string &line : tally.differing) put_line(line, 4);
  return tally.status;
}

}  // namespace lab
