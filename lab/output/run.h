// A run of a scenario, for a person and as the JSON document that docs/lab.md describes.
#pragma once

#include <string>
#include <vector>

#include "output/style.h"
#include "report/run.h"

namespace lab {

void print_title(const std::string &path, const std::string &title, const std::string &about,
                 const Style &style);
void print_step(const StepReport &step, const Style &style);

// Of a step before a what-if, only what was not as expected.
void print_unmet_step(const StepReport &step, const Style &style);
void print_end(const RunReport &report, const Style &style);
void print_what_if(const WhatIfReport &report, const Style &style);

std::string format_run(const RunReport &report, const std::vector<StepReport> &steps);

// --- the words of both ---

// "left verdict", "right verdict of PortChannel10", "differ".
std::string describe_subject(const ExpectationReport &expectation);

// What is expected or found: a text, or a list of texts.
std::string describe_found(std::monostate nothing);
std::string describe_found(const ResultCode &result);
std::string describe_found(const CheckCode &result);
std::string describe_found(const std::string &text);
std::string describe_found(const Vlans &vlans);
std::vector<std::string> describe_found(const std::vector<uint16_t> &types);
std::vector<std::string> describe_found(const std::vector<ParameterRecord> &records);
std::vector<std::string> describe_found(const TextsByType &texts);

}  // namespace lab
