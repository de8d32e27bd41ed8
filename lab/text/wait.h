// Waiting for several things at once.
#pragma once

#include <poll.h>

#include <vector>

#include "text/time.h"

namespace lab {

// Until one of the files is ready, or a time point is reached. Throws Interrupted.
void wait(std::vector<pollfd> &files, TimePoint until);

// Until a file is ready: POLLIN or POLLOUT. Throws Interrupted.
void wait_for(int file, short event);

}  // namespace lab
