// Operations of the library, and their outcomes if a call of the platform fails.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support.h"

namespace test {

// Member ports of multi-chassis channels.
constexpr uint32_t members[] = {0x1001, 0x1003};

// The cache before an operation.
enum class Stage { empty, mst, rapid_pvst, full };

// The outcome of an operation in which one call of the platform fails.
struct Failure {
  const char *outcome;        // see expand_outcome()
  std::size_t added = 0;      // new entries in the cache
  bool is_last_line = false;  // the last log line reports the failure
};

// For the first call of an operation of the platform, the second, ...
using Failures = std::vector<Failure>;
using FailuresOf = std::map<standin_operation_t, Failures>;

struct Operation {
  std::string name;
  Stage stage;
  std::function<std::string()> act;  // returns its outcome as text
  FailuresOf failures;
};

std::vector<Operation> make_operations();

// Expands placeholders in the outcome of a failure, from the outcome without failures: {same} is
// all of it, {counts} and {records} are these fields, {records N} are the records of which the
// first N are filled, {without entry} is an exported array without the entry of the failing call.
std::string expand_outcome(const std::string &outcome, const std::string &clean, uint32_t nth);

}  // namespace test
