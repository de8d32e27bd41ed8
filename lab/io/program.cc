#include "io/program.h"

#include <fmt/core.h>
#include <linux/close_range.h>
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

namespace lab {

struct RunningProgram {
  uv_process_t raw;
  Timer timer;  // of its deadline, and of what follows its end
  bool ended = false;
  bool timed_out = false;
  int64_t status = 0;
  int signal = 0;
};

namespace {

// A file in memory with a text, to be read from its start. -1 and errno without memory.
int make_input(std::string_view text) {
  const int file = memfd_create("event", MFD_CLOEXEC);
  if (file < 0) return -1;
  if (!write_all(file, text).empty() || lseek(file, 0, SEEK_SET) != 0) {
    const int error = errno;
    close(file);
    errno = error;
    return -1;
  }
  return file;
}

// No exception may pass through libuv: the timer calls back.
void note_end(uv_process_t *raw, int64_t status, int signal) {
  auto &program = *static_cast<RunningProgram *>(raw->data);
  program.ended = true;
  program.status = status;
  program.signal = signal;
  program.timer.set_after({});
}

// The program starts in a session and a process group of its own, with the usual signals and the
// environment of the lab. 0, or an error of libuv.
int spawn(Loop &loop, RunningProgram &program, const std::string &path, int input) {
  // Without a slash it would be searched for in the folders of PATH.
  std::string file = path.find('/') == path.npos ? "./" + path : path;
  std::array<char *, 2> words = {file.data(), nullptr};
  std::array<uv_stdio_container_t, 3> files{};
  for (std::size_t i = 0; i < files.size(); ++i) {
    files[i].flags = UV_INHERIT_FD;
    files[i].data.fd = i == 0 ? input : STDERR_FILENO;
  }
  uv_process_options_t options{};
  options.exit_cb = note_end;
  options.file = file.c_str();
  options.args = words.data();
  options.flags = UV_PROCESS_DETACHED;
  options.stdio_count = int(files.size());
  options.stdio = files.data();
  // hiredis leaves its sockets open for programs, and they are logged in.
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
  return uv_spawn(&loop.raw, &program.raw, &options);
}

std::string describe_failure(const RunningProgram &program, const ProgramLimits &limits) {
  if (program.timed_out) {
    return fmt::format("did not end within {:g} s",
                       std::chrono::duration<double>(limits.time).count());
  }
  if (program.signal != 0) return fmt::format("was ended by {}", strsignal(program.signal));
  return program.status != 0 ? fmt::format("ended with status {}", program.status) : "";
}

void report_problem(const ChangeProgram &program, const std::string &pair,
                    const std::string &problem) {
  const std::string prefix = pair.empty() ? "" : pair + ": ";
  program.reporter(fmt::format("{}{} {}", prefix, printable(program.path), problem));
}

void start_waiting(ChangeProgram &program);

void end_or_kill(ChangeProgram &program, const std::string &pair) {
  RunningProgram &running = *program.running.at(pair);
  if (!running.ended) {
    running.timed_out = true;
    kill(-running.raw.pid, SIGKILL);
    return;
  }
  const std::string problem = describe_failure(running, program.limits);
  program.running.erase(pair);
  if (!problem.empty()) report_problem(program, pair, problem);
  start_waiting(program);
}

void start_program(ChangeProgram &program, const std::string &pair, const std::string &event) {
  const int input = make_input(event);
  int error = input >= 0 ? 0 : -errno;
  if (error == 0) {
    std::unique_ptr<RunningProgram, EndProgram> made(new RunningProgram{
        {}, Timer(program.loop, [&program, pair] { end_or_kill(program, pair); })});
    made->raw.data = made.get();
    error = spawn(program.loop, *made, program.path, input);
    close(input);
    made->timer.set_after(program.limits.time);
    if (error == 0) program.running.emplace(pair, std::move(made));
  }
  if (error != 0) {
    report_problem(program, pair, fmt::format("cannot be started: {}", std::strerror(-error)));
  }
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

}  // namespace

void EndProgram::operator()(RunningProgram *program) const {
  program->timer.handle.reset();
  if (program->raw.pid > 0 && !program->ended) {
    kill(-program->raw.pid, SIGKILL);
    waitpid(program->raw.pid, nullptr, 0);
  }
  program->raw.data = program;
  uv_close(reinterpret_cast<uv_handle_t *>(&program->raw),
           [](uv_handle_t *raw) { delete static_cast<RunningProgram *>(raw->data); });
}

std::string find_program_problem(const std::string &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
  if (!S_ISREG(status.st_mode)) return "it is not a file";
  return access(path.c_str(), X_OK) == 0 ? "" : "it is not executable";
}

ChangeProgram::ChangeProgram(Loop &event_loop, std::string program_path, ProgramLimits at_most,
                             Reporter problem_reporter)
    : loop(event_loop),
      path(std::move(program_path)),
      limits(at_most),
      reporter(std::move(problem_reporter)) {}

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
