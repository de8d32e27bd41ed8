// Codes, parameters and commands in words.
#pragma once

#include "show.h"

namespace lab {

// A result code, parameter or command, by name, number or key. false: nothing of that name.
bool explain(const std::string &what, const ShowOptions &options);

// The parameters, the commands, or both.
void list(const std::string &what, const ShowOptions &options);
Json list_json();

}  // namespace lab
