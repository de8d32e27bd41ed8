// Waiting for several things at once.
#pragma once

#include <poll.h>

#include <vector>

#include "sonic/snapshot.h"

namespace lab {

// Until one of the sockets is ready, or a moment has come. Throws Interrupted.
void wait(std::vector<pollfd> &sockets, TimePoint until);

}  // namespace lab
