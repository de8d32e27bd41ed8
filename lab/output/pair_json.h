// A comparison, as the JSON document that docs/lab.md describes.
#pragma once

#include "output/json.h"
#include "output/sides.h"
#include "report/pairs.h"
#include "report/verdict.h"

namespace lab {

// "agree", "disagree", "incomplete".
const char *outcome_name(Outcome outcome);

Json note_to_json(const NoteReport &note, const SideNames &names);
Json comparison_to_json(const PairReport &report);
std::string format_comparison(const PairReport &report);

// The document of one of many pairs, on one line.
std::string format_pair_result(const PairResult &result);

}  // namespace lab
