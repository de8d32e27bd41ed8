// The report of a run of a scenario, step by step.
#pragma once

#include <string>
#include <utility>
#include <variant>

#include "report/scope.h"

namespace lab {

// Returns "accepted", "none" or the message of a refusal, for comparison with expectations.
inline std::string describe_answer(const SwitchReport &report) {
  if (!report.answer) return "none";
  return report.answer->is_accepted ? "accepted" : report.answer->text;
}

// --- expectations ---

struct ResultCode {
  uint32_t code;
  bool operator==(const ResultCode &) const = default;
};

// The code of a check.
struct CheckCode {
  uint32_t code;
  bool operator==(const CheckCode &) const = default;
};

// Parameter types and texts; nullopt: the parameter was not found.
using TextsByType = std::vector<std::pair<uint16_t, std::optional<std::string>>>;

// An expected or found value; monostate: none.
using Finding = std::variant<std::monostate, ResultCode, CheckCode, std::string, Vlans,
                             std::vector<uint16_t>, std::vector<ParameterRecord>, TextsByType>;

struct ExpectationReport {
  std::string key;                  // "verdict", as scenarios spell it
  std::optional<std::size_t> side;  // nullopt: both
  std::string subject;              // a port or a channel; empty: the whole step
  Finding expected;
  Finding found;
  bool is_met = false;
};

// --- steps ---

struct StepHead {
  std::size_t number = 0;  // from 1
  int line = 0;
  std::string action;   // the step's key: "command", "check", ...
  std::string summary;  // for display: "no stp-mode"
  std::string note;
  std::array<bool, 2> on = {true, true};
};

struct StepReport {
  StepHead head;
  std::array<std::optional<SwitchReport>, 2> switches = {};
  std::optional<std::vector<ScopeReport>> checks = {};
  std::vector<ExpectationReport> expectations = {};
};

struct WhatIfSide {
  SwitchReport answer;
  std::size_t checked = 0;            // scopes
  std::vector<ScopeReport> now = {};  // only the scopes that the step would change
  std::vector<ScopeReport> then = {};
};

struct WhatIfReport {
  StepHead head;
  std::array<std::optional<WhatIfSide>, 2> sides = {};
};

struct RunFailure {
  std::string problem;
  std::optional<StepHead> step;  // nullopt: before the first step
};

// A run without its steps, which are reported one by one.
struct RunReport {
  std::string path;
  std::string title;
  std::string about;
  std::optional<bool> agree = {};  // at the last check
  std::size_t expected = 0;        // expectations
  std::size_t met = 0;             // of these
  std::optional<WhatIfReport> what_if = {};
  std::optional<RunFailure> failure = {};
};

// Returns whether the run completed and met every expectation.
inline bool is_as_expected(const RunReport &report) {
  return !report.failure && report.met == report.expected;
}

}  // namespace lab
