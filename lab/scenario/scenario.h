// A scenario: two switches, what is done to them step by step, and what is expected to come of it.
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

// What is expected of a step.
struct Expected {
  const ExpectationKind *kind = nullptr;
  std::string subject = {};              // a port or a channel; empty: the whole step
  std::optional<std::size_t> side = {};  // nothing: each that the step is on
  Finding value = {};
};

struct Step : StepHead {
  Requests requests;  // but a check, which both are asked
  std::optional<Check> check;
  std::string saved_as;      // the name of the array that is exported
  std::string rebuilt_from;  // the name of the array that is put back
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
  InputErrors errors;  // in the order of the file; none: the scenario can be run
};

// The scenario in a file; "-" is standard input.
ReadScenario read_scenario(const std::string &path, const ReadFrom &read_from);

// The scenario of a text. Files that it names are looked for beside its path.
ReadScenario read_scenario_text(const std::string &path, const std::string &text,
                                const ReadFrom &read_from);

// Can what-if be asked about a step?
bool changes_settings(const Step &step);

// Check all that is expected of a step against its report, and add it there.
void check_expectations(const Step &step, StepReport &report);

}  // namespace lab
