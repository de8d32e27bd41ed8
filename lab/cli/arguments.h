// The command line: the options of the program exist here only, for the parser, --help, the manual
// page and the completion.
#pragma once

#include <memory>
#include <string>

#include "cli/commands.h"

namespace CLI {
class App;
}

namespace lab {

// Either a command with its arguments, help that was asked for, or what is wrong.
struct CommandLine {
  Arguments arguments;
  std::string help;
  std::string error;
};

// Parses the arguments of main; nothing is executed.
CommandLine parse_command_line(int argc, const char *const *argv);

// A parser that fills in the arguments, which outlive it.
std::shared_ptr<CLI::App> make_parser(Arguments &arguments);

}  // namespace lab
