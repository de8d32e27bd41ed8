// Waiting for several things at once.
#pragma once

#include <poll.h>

#include <vector>

#include "text/time.h"

namespace lab {

// Until one of the sockets is ready, or a time point is reached. Throws Interrupted.
void wait(std::vector<pollfd> &sockets, TimePoint until);

}  // namespace lab
