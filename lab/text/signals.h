// Signals that ask the lab to stop.
#pragma once

namespace lab {

// Thrown where the lab waits, when a signal asks it to stop.
struct Interrupted {};

// Let SIGINT and SIGTERM end the lab in order; what waits throws Interrupted.
void stop_on_signals();
bool interrupted();

// For the processes that the lab starts: they are stopped by the lab alone, also when a signal came
// while they were being made.
void leave_signals_to_the_lab();

}  // namespace lab
