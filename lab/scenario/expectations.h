// What can be expected of a step, a row each: its key, the steps that it is for, how it is read, and
// how it is snapshot against the outcome.
#pragma once

#include <string>
#include <vector>

#include "scenario/steps.h"

namespace lab {

// The keys of the expectations of a step.
std::vector<std::string> expectation_keys(const std::string &action);

std::vector<Expected> read_expectations(StepReader &reader, const YAML::Node &node,
                                        const std::string &action);

// Hold what is expected of a step against what the document tells of it, and add to that a list
// "expectations".
void hold(const Step &step, Json &told);

// Does every expectation of an outcome hold?
bool all_hold(const Json &outcome);

}  // namespace lab
