// Codes, parameters and commands in words.
#pragma once

#include <string>

#include "output/layout.h"

namespace lab {

// A result code, parameter or command, by name, number or key. false: nothing of that name.
bool explain(const std::string &what, const Layout &layout);

// The parameters, the commands, or both.
void list(const std::string &what, const Layout &layout);

// The tables as a JSON document.
std::string format_list();

}  // namespace lab
