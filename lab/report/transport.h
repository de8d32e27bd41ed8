// Reports as bytes, for the way from one process of the lab to another.
#pragma once

#include "report/pairs.h"

namespace lab {

std::string encode_result(const PairResult &result);

// Nothing: the bytes are no result.
std::optional<PairResult> decode_result(const std::string &bytes);

}  // namespace lab
