// Writes the manual page or the completion from a template: replaces the line @MAN_ARGUMENTS@ or
// @BASH_ARGUMENTS@ by the arguments of the program.
//   write-page TEMPLATE PAGE
#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <utility>

#include "cli/commands.h"
#include "text/text.h"

namespace {

using namespace lab;

// Escapes text for a manual page; options become bold.
std::string roff(const std::string &text) {
  std::string page;
  for (const std::string_view word : split(text, ' ')) {
    const bool is_option = word.substr(0, 2) == "--";
    page += page.empty() ? "" : " ";
    page += is_option ? "\\fB" : "";
    for (const char byte : word) page += (byte == '-' ? "\\" : "") + std::string(1, byte);
    page += is_option ? "\\fR" : "";
  }
  return page;
}

bool is_repeated(const CLI::Option &argument) {
  return argument.get_expected_max() == CLI::detail::expected_max_vector_size;
}

// Returns the placeholders of its values, or choices of words: "dump|state".
std::vector<std::string> values_of(const CLI::Option &argument) {
  std::istringstream text(argument.get_option_text());
  return {std::istream_iterator<std::string>(text), {}};
}

std::string man_argument(const CLI::Option &argument) {
  const std::string name = argument.get_name();
  std::string head = fmt::format("\\f{}{}\\fR", name[0] == '-' ? 'B' : 'I', roff(name));
  for (const std::string &value : values_of(argument))
    head += fmt::format(" \\fI{}\\fR", roff(value));
  return fmt::format(".TP\n{}{}\n{}.\n", head, is_repeated(argument) ? " ..." : "",
                     roff(argument.get_description()));
}

// Lists the arguments that all commands have once, at the end.
std::string man_arguments(const std::vector<const CLI::App *> &commands) {
  std::string page;
  std::string shared;
  for (const CLI::App *command : commands) {
    page +=
        fmt::format(".SS {}\n{}.\n", roff(command->get_name()), roff(command->get_description()));
    for (const CLI::Option *argument : command->get_options()) {
      const bool is_shared = std::all_of(commands.begin(), commands.end(), [&](const auto *other) {
        const CLI::Option *same = other->get_option_no_throw(argument->get_name());
        return same != nullptr && same->get_description() == argument->get_description();
      });
      if (!is_shared) page += man_argument(*argument);
      if (is_shared && command == commands[0]) shared += man_argument(*argument);
    }
  }
  return page + ".SS all commands\n" + shared;
}

// Writes a line for each argument: the command, the option or the position (+: any), the values.
std::string bash_arguments(const std::vector<const CLI::App *> &commands) {
  std::string page;
  for (const CLI::App *command : commands) {
    int place = 0;
    for (const CLI::Option *argument : command->get_options()) {
      const std::string name = argument->get_name();
      const bool is_option = name[0] == '-';
      const auto values = values_of(*argument);
      const std::string key = is_option                ? name
                              : is_repeated(*argument) ? "+"
                                                       : std::to_string(place++);
      page += command->get_name() + " " + key;
      if (!is_option && values.empty()) page += " " + name;
      for (const std::string &value : values) page += " " + value;
      page += '\n';
    }
  }
  return page;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    std::cerr << "usage: write-page TEMPLATE PAGE\n";
    return 2;
  }
  std::ifstream source(argv[1]);
  std::ofstream page(argv[2]);
  lab::Arguments unused;
  const auto parser = make_parser(unused);
  const auto commands = std::as_const(*parser).get_subcommands(nullptr);
  int count = 0;  // of replaced lines
  for (std::string line; std::getline(source, line);) {
    const bool is_man = line == "@MAN_ARGUMENTS@";
    const bool is_bash = line == "@BASH_ARGUMENTS@";
    count += is_man || is_bash ? 1 : 0;
    if (const auto at = line.find("@VERSION@"); at != line.npos) line.replace(at, 9, LAB_VERSION);
    page << (is_man ? man_arguments(commands) : is_bash ? bash_arguments(commands) : line + '\n');
  }
  page.close();
  if (count == 1 && page) return 0;
  std::cerr << argv[1] << ": the template is invalid, or the page cannot be written\n";
  return 1;
}
