// The words of a command line: what is to be done with what, or what is to be said instead.
#pragma once

#include <string>

#include "cli/commands.h"

namespace lab {

using Action = Status (*)(const Arguments &);

// One of the three: something to do, help that was asked for, or what is wrong with the words.
struct Line {
  Action action = nullptr;
  Arguments arguments;
  std::string help;
  std::string error;
};

// The words of main; nothing is carried out.
Line parse_line(int argc, const char *const *argv);

}  // namespace lab
