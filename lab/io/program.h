// A program that runs on each event of a pair: the event is its standard input.
//
// For each pair one runs at a time, and of the events that wait the last one is kept. A program
// that does not end in time is killed with its process group. No shell is involved.
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

// Why a path cannot be run as a program, else "".
std::string find_program_problem(const std::string &path);

// Killed with its process group where it has not ended.
struct RunningProgram {
  pid_t pid;  // 0: it has ended
  Timer deadline;
  bool timed_out = false;

  ~RunningProgram();
};

struct ChangeProgram {
  using Reporter = std::function<void(const std::string &problem)>;

  // The reporter gets what goes wrong: a program that cannot be started, fails, or is killed.
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
  std::deque<Waiting> waiting;                                     // at most one of a pair
  std::map<std::string, std::unique_ptr<RunningProgram>> running;  // by pair
  SignalWatch ends;
};

}  // namespace lab
