// A watched pair in the text format of Prometheus, for the textfile collector of the node exporter.
#pragma once

#include <array>
#include <chrono>
#include <string>

#include "tasks/events.h"

namespace lab {

// Nothing where a file of metrics can be written: nothing is there, or a file; else what is wrong.
std::string problem_of_metrics(const std::string &path);

// `compared`: when the pair was last known to be as it was told; 0: never. Whoever reads the file sees
// all of it or what was there before. What is wrong, "" when it is written.
std::string write_metrics(const std::string &path, const Told &told,
                          const std::array<bool, 2> &connected,
                          std::chrono::system_clock::time_point compared);

}  // namespace lab
