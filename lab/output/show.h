// A run for a person, made from its document: steps, answers, checks.
#pragma once

#include "output/json.h"
#include "output/layout.h"

namespace lab {

struct ShowOptions {
  Layout layout;
  bool quiet = false;           // verdicts and broken expectations only
  bool only_different = false;  // of a check only the scopes that do not agree
};

void show_title(const Json &scenario, const ShowOptions &options);
void show_step(const Json &step, const ShowOptions &options);
void show_end(const Json &outcome, const ShowOptions &options);
void show_what_if(const Json &outcome, const ShowOptions &options);

}  // namespace lab
