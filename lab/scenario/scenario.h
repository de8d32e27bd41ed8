// A scenario: two switches, the steps to perform on them, and the expectations of each step.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "pair/pair.h"
#include "pair/scopes.h"
#include "report/run.h"
#include "switch/state_file.h"
#include "text/error.h"

namespace lab {

struct ExpectationKind;

// An expected result of a step.
struct Expected {
  const ExpectationKind *kind = nullptr;
  std::string subject = {};              // a port or a channel; empty: the whole step
  std::optional<std::size_t> side = {};  // nullopt: each side of the step
  Finding value = {};
};

struct Step : StepHead {
  Requests requests;           // empty for a check
  std::optional<Check> check;  // performed by both switches
  std::string saved_as;        // the name under which the exported array is stored
  std::string rebuilt_from;    // the name of the array of a rebuild
  std::vector<Expected> expected;
};

struct Scenario {
  std::string path;
  std::string title;
  std::string about;
  std::optional<Vlans> twins;
  SettingsPair settings;
  std::vector<Step> steps;
};

struct ReadScenario {
  Scenario scenario;
  InputErrors errors;  // in the order of the file; if there are any, the scenario is invalid
};

// Reads a scenario from a file. "-" is standard input.
ReadScenario read_scenario(const std::string &path, const ReadFrom &read_from);

// Reads a scenario from a text. Paths of files in it are relative to the folder of `path`.
ReadScenario read_scenario_text(const std::string &path, const std::string &text,
                                const ReadFrom &read_from);

// Returns whether a step changes settings: what-if accepts only such a step.
bool changes_settings(const Step &step);

// Compares the expectations of a step with its report, and adds the outcomes to the report.
void check_expectations(const Step &step, StepReport &report);

}  // namespace lab
