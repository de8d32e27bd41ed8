// Signals that ask the lab to stop.
#pragma once

#include <csignal>

namespace lab {

// Thrown where the lab waits, when a signal asks it to stop.
struct Interrupted {};

// Let SIGINT, SIGTERM and SIGHUP end the lab in order: what waits throws Interrupted. What cannot
// be interrupted, as a parser, or a write to a pipe that nobody reads, has a second, then the
// process ends.
void stop_on_signals();
bool interrupted();

// A file that is ready to be read when a signal has asked the lab to stop. Throws std::system_error.
int stop_signal_file();

// Of SIGINT, SIGTERM and SIGHUP, those that ask the lab to stop.
sigset_t stop_signals();

// For the processes that the lab starts: they are stopped by the lab alone, also when a signal came
// while they were being made.
void leave_signals_to_the_lab();

}  // namespace lab
