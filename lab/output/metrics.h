// Metrics of watched pairs, in the text format of Prometheus.
#pragma once

#include <string>

#include "report/status.h"

namespace lab {

std::string format_metrics(const FleetStatus &fleet);

// Returns why the path cannot be a metrics file; empty if it is a regular file or does not exist.
std::string find_problem_of_metrics(const std::string &path);

// Writes a file for the textfile collector of the node exporter, atomically. Returns an error with
// the path; empty on success.
std::string write_metrics(const std::string &path, const FleetStatus &fleet);

}  // namespace lab
