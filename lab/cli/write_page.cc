// Writes the manual page or the completion from its template: a line of the template that asks for
// the arguments of the program becomes these, for a manual page or for a completion.
//   write-page TEMPLATE PAGE
#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>

#include "cli/arguments.h"
#include "text/text.h"

namespace {

using namespace lab;

// Text of a manual page; options in it are bold.
std::string roff(const std::string &text) {
  std::string page;
  for (const std::string_view word : split(text, ' ')) {
    const bool is_option = word.substr(0, 2) == "--";
    page += page.empty() ? "" : " ";
    page += is_option ? "\\fB" : "";
    for (const char sign : word) page += (sign == '-' ? "\\" : "") + std::string(1, sign);
    page += is_option ? "\\fR" : "";
  }
  return page;
}

std::string man_argument(const ArgumentDescription &argument) {
  const bool is_option = argument.name[0] == '-';
  std::string head = fmt::format("\\f{}{}\\fR", is_option ? 'B' : 'I', roff(argument.name));
  for (const std::string &value : argument.values) head += fmt::format(" \\fI{}\\fR", roff(value));
  return fmt::format(".TP\n{}{}\n{}.\n", head, argument.is_repeated ? " ..." : "",
                     roff(argument.about));
}

bool has(const CommandDescription &command, const ArgumentDescription &argument) {
  return find_in(command.arguments, [&](const ArgumentDescription &other) {
           return other.name == argument.name && other.about == argument.about;
         }) != nullptr;
}

// What every command has comes once, at the end.
std::string man_arguments(const std::vector<CommandDescription> &commands) {
  std::string page;
  std::string shared;
  for (const CommandDescription &command : commands) {
    page += fmt::format(".SS {}\n{}.\n", roff(command.name), roff(command.about));
    for (const ArgumentDescription &argument : command.arguments) {
      const bool is_shared = std::all_of(commands.begin(), commands.end(),
                                         [&](const auto &other) { return has(other, argument); });
      if (!is_shared) page += man_argument(argument);
      if (is_shared && &command == &commands[0]) shared += man_argument(argument);
    }
  }
  return page + ".SS all commands\n" + shared;
}

// COMMAND, an option or the place of another argument (+: any), and the values.
std::string bash_arguments(const std::vector<CommandDescription> &commands) {
  std::string page;
  for (const CommandDescription &command : commands) {
    int place = 0;
    for (const ArgumentDescription &argument : command.arguments) {
      const bool is_option = argument.name[0] == '-';
      const std::string key = is_option              ? argument.name
                              : argument.is_repeated ? "+"
                                                     : std::to_string(place++);
      page += command.name + " " + key;
      if (!is_option && argument.values.empty()) page += " " + argument.name;
      for (const std::string &value : argument.values) page += " " + value;
      page += '\n';
    }
  }
  return page;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    std::cerr << "write-page TEMPLATE PAGE\n";
    return 2;
  }
  std::ifstream source(argv[1]);
  std::ofstream page(argv[2]);
  const auto commands = describe_commands();
  int count = 0;  // of the lines that ask for arguments
  for (std::string line; std::getline(source, line);) {
    const bool is_man = line == "@MAN_ARGUMENTS@";
    const bool is_bash = line == "@BASH_ARGUMENTS@";
    count += is_man || is_bash ? 1 : 0;
    if (const auto at = line.find("@VERSION@"); at != line.npos) line.replace(at, 9, LAB_VERSION);
    page << (is_man ? man_arguments(commands) : is_bash ? bash_arguments(commands) : line + '\n');
  }
  page.close();
  if (count == 1 && page) return 0;
  std::cerr << argv[1] << ": no page was written\n";
  return 1;
}
