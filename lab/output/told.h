// What documents tell of a check, asked by those who hold expectations against it or show it; and of
// errors.
#pragma once

#include <string>
#include <vector>

#include "output/json.h"
#include "text/error.h"

namespace lab {

// Do both switches agree in a scope, or in each of a check?
bool agrees(const Json &check);
bool all_agree(const Json &checks);

// Is a parameter out of step? It differs, or one of the switches misses it.
bool is_out_of_step(const Json &parameter);

// The parameters by which a scope differs.
std::vector<std::string> differing(const Json &check);

// More errors than these help no person at once.
inline constexpr std::size_t printed_errors = 100;

// All errors of a source, as a list; of a text file by line and column, else by "where".
Json errors_to_json(const std::string &source, const InputErrors &errors);

}  // namespace lab
