// A run, as the JSON document that docs/lab.md describes.
#pragma once

#include "output/json.h"
#include "report/run.h"

namespace lab {

Json step_to_json(const StepReport &step);

// `steps`: the list of the steps so far.
Json run_to_json(const RunReport &report, Json steps);

}  // namespace lab
