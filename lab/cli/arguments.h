// The command line: the options of the program exist here only, for the parser, --help, the manual
// page and the completion.
#pragma once

#include <string>
#include <vector>

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

struct ArgumentDescription {
  std::string name;                 // "--json", or "LEFT"
  std::vector<std::string> values;  // of an option: "FILE", or words to choose from, "dump|state"
  std::string about;
  bool is_repeated = false;
};

struct CommandDescription {
  std::string name;
  std::string about;
  std::vector<ArgumentDescription> arguments;
};

std::vector<CommandDescription> describe_commands();

}  // namespace lab
