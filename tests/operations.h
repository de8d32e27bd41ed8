// The operations of the library, and their outcomes when a call of the platform fails.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support.h"

namespace test {

// Member ports of multi-chassis channels.
constexpr uint32_t members[] = {0x1001, 0x1003};

// What is cached before an operation.
enum class Stage { empty, mst, rapid_pvst, full };

// The outcome of an operation of which one call of the platform fails.
struct Failure {
  const char *outcome;        // see expand_outcome()
  std::size_t added = 0;      // entries in the cache that were not there before
  bool is_last_line = false;  // the log ends with the failure
};

// For each call of an operation of the platform in turn.
using Failures = std::vector<Failure>;
using FailuresOf = std::map<standin_operation_t, Failures>;

struct Operation {
  std::string name;
  Stage stage;
  std::function<std::string()> act;  // returns its outcome as text
  FailuresOf failures;
};

std::vector<Operation> make_operations();

// The outcome of a failure, from the one without a failure: {same} stands for all of it, {counts}
// and {records} for these fields, {records N} for the records of which the first N are filled,
// {without entry} for an exported array that lacks the entry of the failing call.
std::string expand_outcome(const std::string &outcome, const std::string &clean, uint32_t nth);

}  // namespace test
