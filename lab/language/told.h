// What the document tells of a check, asked by those who hold expectations against it or show it.
#pragma once

#include <string>
#include <vector>

#include "language/json.h"

namespace lab {

// Do both switches agree in a scope, or in each of a check?
bool agrees(const Json &check);
bool all_agree(const Json &checks);

// Is a parameter out of step? It differs, or one of the switches misses it.
bool is_out_of_step(const Json &parameter);

// The parameters by which a scope differs.
std::vector<std::string> differing(const Json &check);

}  // namespace lab
