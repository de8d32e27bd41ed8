// A comparison, as the JSON document that docs/lab.md describes.
#pragma once

#include "output/json.h"
#include "report/pair.h"

namespace lab {

Json comparison_to_json(const PairReport &report);

}  // namespace lab
