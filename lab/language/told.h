// What documents tell of a check, asked by those who hold expectations against it or show it; and of
// mistakes.
#pragma once

#include <string>
#include <vector>

#include "language/json.h"
#include "language/mistake.h"

namespace lab {

// Do both switches agree in a scope, or in each of a check?
bool agrees(const Json &check);
bool all_agree(const Json &checks);

// Is a parameter out of step? It differs, or one of the switches misses it.
bool is_out_of_step(const Json &parameter);

// The parameters by which a scope differs.
std::vector<std::string> differing(const Json &check);

// More mistakes than these help no person at once.
inline constexpr std::size_t mistakes_told = 100;

// All mistakes of a source, as a list; of a text file by line and column, else by "where".
Json told_mistakes(const std::string &source, const Mistakes &mistakes);

}  // namespace lab
