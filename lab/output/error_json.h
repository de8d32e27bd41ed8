// Errors of input, as JSON.
#pragma once

#include <string>

#include "output/json.h"
#include "report/pairs.h"

namespace lab {

// All errors of some sources, as a list; of a text file by line and column, else by "where".
Json errors_to_json(const std::vector<SourceErrors> &sources);

// A document with errors only, on one line or indented.
enum class JsonForm { line, indented };
std::string format_errors(const std::vector<SourceErrors> &sources, JsonForm form);

// The document of a scenario that cannot be run.
std::string format_scenario_errors(const std::string &path, const InputErrors &errors);

// A document as text; bytes that are not UTF-8 are replaced.
std::string format_json(const Json &json, JsonForm form);

}  // namespace lab
