// A scenario: two switches, what is done to them step by step, and what is expected to come of it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "vocabulary.h"

namespace lab {

// Something in a file that is not as it must be.
struct Mistake {
  int line;  // from 1
  int column;
  std::string text;  // what was found, and what was expected
};

struct Step {
  int line = 0;
  std::string action;   // the step's key: "command", "check", ...
  std::string summary;  // for a person: "no stp-mode"
  std::string note;
  std::array<bool, 2> on = {true, true};
  std::vector<Json> requests;  // for the switches, in order
  Json expect = Json::object();
};

struct Scenario {
  std::string path;
  std::string title;
  std::string about;
  std::string twin_vlans;                  // a bitmap record in hexadecimal, or empty
  std::array<std::vector<Json>, 2> setup;  // requests that make each switch what it is at first
  std::vector<Step> steps;
};

struct ReadScenario {
  Scenario scenario;
  std::vector<Mistake> mistakes;  // in the order of the file; none: the scenario can be run
};

ReadScenario read_scenario(const std::string &path);

// The keys of a step that say what is done.
std::vector<std::string> step_actions();

}  // namespace lab
