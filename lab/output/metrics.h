// A watched pair in the text format of Prometheus, for the textfile collector of the node exporter.
#pragma once

#include <string>

#include "report/status.h"

namespace lab {

// Why no file of metrics can be written at a path; empty: nothing is there, or a file.
std::string find_problem_of_metrics(const std::string &path);

// Whoever reads the file sees all of it or what was there before. What is wrong, with the path; ""
// when it is written.
std::string write_metrics(const std::string &path, const PairStatus &status);

}  // namespace lab
