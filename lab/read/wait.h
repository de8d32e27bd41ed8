// Waiting for several things at once.
#pragma once

#include <poll.h>

#include <vector>

#include "read/held.h"

namespace lab {

// Until one of the sockets is ready, or a moment has come. Throws Interrupted.
void wait(std::vector<pollfd> &sockets, Moment until);

}  // namespace lab
