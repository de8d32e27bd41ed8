// The command line.
#pragma once

#include <string>

#include "cli/commands.h"

namespace lab {

// One of the three: a command with its arguments, help that was asked for, or what is wrong.
struct CommandLine {
  Arguments arguments;
  std::string help;
  std::string error;
};

// Parses the arguments of main; nothing is executed.
CommandLine parse_command_line(int argc, const char *const *argv);

}  // namespace lab
