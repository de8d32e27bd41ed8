// Waits with deadlines, which the signals that stop the lab interrupt.
#pragma once

#include <poll.h>

#include <chrono>
#include <vector>

namespace lab {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

// Thrown by functions that wait, when a signal stops the lab.
struct Interrupted {};

// Makes SIGINT, SIGTERM and SIGHUP stop the lab: functions that wait throw Interrupted. Code that
// cannot be interrupted (a parser, a blocked write to a pipe) has one second, then the process
// exits.
void stop_on_signals();

// Returns true after one of these signals.
bool interrupted();

// Returns a descriptor that becomes readable when a signal stops the lab. Throws std::system_error.
int stop_signal_file();

// Resets the signal handling in a child process: only the lab stops its children. Discards a signal
// that arrived during fork().
void reset_child_signals();

// Waits until one of the files is ready or the deadline passes. Throws Interrupted.
void wait(std::vector<pollfd> &files, TimePoint until);

// Waits until a file is ready for POLLIN or POLLOUT. Throws Interrupted.
void wait_for(int file, short event);

}  // namespace lab
