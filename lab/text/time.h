// The clock of waits and deadlines.
#pragma once

#include <chrono>

namespace lab {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

}  // namespace lab
