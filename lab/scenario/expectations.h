// What can be expected of a step: a row for each kind, with its key, the steps that it is for, how
// it is read, and how it is checked against the report of the step.
#pragma once

#include <string>
#include <vector>

#include "scenario/steps.h"

namespace lab {

// Adds what is expected to a list.
using ReadExpectation = void(StepReader &reader, const YAML::Node &node,
                             const ExpectationKind &kind, std::vector<Expected> &expected);

// Adds what was found to the expectations of a report.
using CheckExpectation = void(const Expected &expected, const Step &step, StepReport &report);

struct ExpectationKind {
  const char *key;
  std::vector<std::string> actions;
  ReadExpectation *read;
  CheckExpectation *check;
};

// The keys of the expectations of a step.
std::vector<std::string> expectation_keys(const std::string &action);

std::vector<Expected> read_expectations(StepReader &reader, const YAML::Node &node,
                                        const std::string &action);

// Check all that is expected of a step.
void check_expectations(const Step &step, StepReport &report);

// --- what the rows are made of ---

ReadExpectation read_expected_result, read_expected_code, read_expected_answer,
    read_expected_records, read_expected_texts, read_expected_types, read_expected_vlans,
    read_expected_ports, read_expected_channels, read_expected_inconsistent;

CheckExpectation check_result, check_answer, check_records, check_values, check_display,
    check_verdict, check_differing, check_passing_vlans, check_failing_vlans, check_scope_verdict,
    check_inconsistent;

}  // namespace lab
