// Runs a program on each event of a pair. The event is its standard input.
//
// At most one program runs for each pair. While it runs, only the latest event is kept. A program
// that exceeds the time limit is killed with its process group. No shell is involved.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "io/loop.h"

namespace lab {

struct ProgramLimits {
  std::size_t at_once = 8;
  std::chrono::milliseconds time = std::chrono::seconds(30);
};

// Returns why a path cannot be run as a program, "" if it can.
std::string find_program_problem(const std::string &path);

// The destructor kills the process group if the program is still running.
struct RunningProgram {
  pid_t pid;  // 0 after the exit
  Timer deadline;
  bool timed_out = false;

  ~RunningProgram();
};

struct ChangeProgram {
  using Reporter = std::function<void(const std::string &problem)>;

  // The reporter is called if a program cannot be started, fails, or is killed.
  ChangeProgram(Loop &loop, std::string path, ProgramLimits limits, Reporter reporter);
  ChangeProgram(const ChangeProgram &) = delete;
  ChangeProgram &operator=(const ChangeProgram &) = delete;

  void run(const std::string &pair, std::string event);

  struct Waiting {
    std::string pair;
    std::string event;
  };

  Loop &loop;
  std::string path;
  ProgramLimits limits;
  Reporter reporter;
  std::deque<Waiting> waiting;                                     // at most one for each pair
  std::map<std::string, std::unique_ptr<RunningProgram>> running;  // by pair
  SignalWatch child_exits;
};

}  // namespace lab
