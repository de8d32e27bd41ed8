// Frames over the lab's sockets: a length, then that many bytes.
#pragma once

#include <cstdint>
#include <optional>

#include "vocabulary.h"

namespace lab {

// Thrown by a read or write that a signal to stop the lab has interrupted.
struct Interrupted {};

// Let SIGINT and SIGTERM end the lab in order: reads and writes of frames throw Interrupted.
void stop_on_signals();
bool interrupted();

// For the processes that the lab starts: they are stopped by the lab alone, also when a signal came
// while they were being made.
void leave_signals_to_the_lab();

// false: the other end is gone.
bool write_frame(int socket, const Bytes &frame);

// Nothing: the other end is gone.
std::optional<Bytes> read_frame(int socket);

}  // namespace lab
