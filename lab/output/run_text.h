// A run for a person: steps, answers, checks, expectations.
#pragma once

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

}  // namespace lab
