// Mistakes as documents tell them.
#pragma once

#include <string>

#include "language/json.h"
#include "language/mistake.h"

namespace lab {

// More than these help nobody at once.
constexpr std::size_t mistakes_told = 100;

// The first mistakes of a source: of a text file by line and column, of all by "where".
Json told_mistakes(const std::string &source, const Mistakes &mistakes);

}  // namespace lab
