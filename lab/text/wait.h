// Waiting with a deadline, which the signals that ask the lab to stop end.
#pragma once

#include <poll.h>

#include <chrono>
#include <vector>

namespace lab {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

// Thrown where the lab waits, when a signal asks it to stop.
struct Interrupted {};

// Let SIGINT, SIGTERM and SIGHUP end the lab in order: what waits throws Interrupted. What cannot
// be interrupted, as a parser, or a write to a pipe that nobody reads, has a second, then the
// process ends.
void stop_on_signals();
bool interrupted();

// A file that is ready when a signal has asked the lab to stop. Throws std::system_error.
int stop_signal_file();

// For the processes that the lab starts: they are stopped by the lab alone, also when a signal came
// while they were being made.
void leave_signals_to_the_lab();

// Until one of the files is ready, or a time point is reached. Throws Interrupted.
void wait(std::vector<pollfd> &files, TimePoint until);

// Until a file is ready: POLLIN or POLLOUT. Throws Interrupted.
void wait_for(int file, short event);

}  // namespace lab
