// A run, as the JSON document that docs/lab.md describes.
#pragma once

#include <memory>
#include <string>

#include "output/json.h"
#include "report/run.h"

namespace lab {

// The steps of a document in the making.
std::shared_ptr<Json> make_step_list();
void add_step(const StepReport &step, Json &steps);

// The document; the steps are moved into it.
std::string format_run(const RunReport &report, Json &steps);

}  // namespace lab
