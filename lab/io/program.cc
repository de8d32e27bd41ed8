#include "io/program.h"

#include <fmt/core.h>
#include <linux/close_range.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

// Creates a file in memory with a text, positioned at its start. Returns -1 and sets errno on
// failure.
Descriptor make_input(std::string_view text) {
  Descriptor file(memfd_create("event", MFD_CLOEXEC));
  if (file >= 0 && (!write_all(file, text).empty() || lseek(file, 0, SEEK_SET) != 0)) file.close();
  return file;
}

// Starts the program in a session and process group of its own, with default signal handling and
// the environment of the lab. Uses posix_spawn(), because posix_spawnp() and execvp() run a file
// without "#!" in a shell. Returns 0 or an errno value.
int spawn(const std::string &path, int input, pid_t &pid) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  std::memset(&signals, 0xff, sizeof signals);  // unlike sigfillset(), with glibc's own signals
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  // hiredis opens sockets without O_CLOEXEC, and they are logged in.
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
  std::string name = path;
  const std::array<char *, 2> words = {name.data(), nullptr};
  const int error = posix_spawn(&pid, path.c_str(), &files, &attributes, words.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error;
}

std::string describe_failure(const RunningProgram &program, int status,
                             const ProgramLimits &limits) {
  if (program.timed_out) {
    return fmt::format("did not end within {:g} s",
                       std::chrono::duration<double>(limits.time).count());
  }
  if (WIFSIGNALED(status)) return fmt::format("was killed: {}", strsignal(WTERMSIG(status)));
  return status != 0 ? fmt::format("ended with status {}", WEXITSTATUS(status)) : "";
}

void report_problem(const ChangeProgram &program, const std::string &pair,
                    const std::string &problem) {
  const std::string prefix = pair.empty() ? "" : pair + ": ";
  program.reporter(fmt::format("{}{} {}", prefix, printable(program.path), problem));
}

void start_program(ChangeProgram &program, const std::string &pair, const std::string &event) {
  const Descriptor input = make_input(event);
  pid_t pid = 0;
  const int error = input >= 0 ? spawn(program.path, input, pid) : errno;
  if (error != 0) {
    return report_problem(program, pair,
                          fmt::format("cannot be started: {}", std::strerror(error)));
  }
  auto &running = program.running[pair];
  running.reset(new RunningProgram{pid, Timer(program.loop, [&program, pair] {
                                     program.running.at(pair)->timed_out = true;
                                     kill(-program.running.at(pair)->pid, SIGKILL);
                                   })});
  running->deadline.set_after(program.limits.time);
}

void start_waiting(ChangeProgram &program) {
  while (program.running.size() < program.limits.at_once) {
    const auto next =
        std::find_if(program.waiting.begin(), program.waiting.end(),
                     [&](const auto &waiting) { return !program.running.contains(waiting.pair); });
    if (next == program.waiting.end()) return;
    const ChangeProgram::Waiting started = std::move(*next);
    program.waiting.erase(next);
    start_program(program, started.pair, started.event);
  }
}

void reap_programs(ChangeProgram &program) {
  for (auto next = program.running.begin(); next != program.running.end();) {
    const auto &[pair, running] = *next;
    int status = 0;
    if (waitpid(running->pid, &status, WNOHANG) == 0) {
      ++next;
      continue;
    }
    running->pid = 0;
    const std::string problem = describe_failure(*running, status, program.limits);
    if (!problem.empty()) report_problem(program, pair, problem);
    next = program.running.erase(next);
  }
  start_waiting(program);
}

}  // namespace

RunningProgram::~RunningProgram() {
  if (pid == 0) return;
  kill(-pid, SIGKILL);
  waitpid(pid, nullptr, 0);
}

std::string find_program_problem(const std::string &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
  if (!S_ISREG(status.st_mode)) return "it is not a file";
  return access(path.c_str(), X_OK) == 0 ? "" : "it is not executable";
}

ChangeProgram::ChangeProgram(Loop &event_loop, std::string program_path,
                             ProgramLimits program_limits, Reporter problem_reporter)
    : loop(event_loop),
      path(std::move(program_path)),
      limits(program_limits),
      reporter(std::move(problem_reporter)),
      child_exits(event_loop, SIGCHLD, [this] { reap_programs(*this); }) {}

void ChangeProgram::run(const std::string &pair, std::string event) {
  const auto same = std::find_if(waiting.begin(), waiting.end(),
                                 [&](const Waiting &other) { return other.pair == pair; });
  if (same != waiting.end()) {
    same->event = std::move(event);
  } else {
    waiting.push_back({pair, std::move(event)});
  }
  start_waiting(*this);
}

}  // namespace lab
