// Watched pairs in the text format of Prometheus.
#pragma once

#include <string>

#include "report/status.h"

namespace lab {

std::string format_metrics(const FleetStatus &fleet);

// Why no file of metrics can be written at a path; empty: nothing is there, or a file.
std::string find_problem_of_metrics(const std::string &path);

// For the textfile collector of the node exporter: whoever reads the file sees all of it or what
// was there before. What is wrong, with the path; "" when it is written.
std::string write_metrics(const std::string &path, const FleetStatus &fleet);

}  // namespace lab
