// Command lines. They are parsed, including their sources, but not executed.

#include "cli/commands.h"
#include "texts.h"

namespace {

bool is_between(double value, double least, double most) {
  return value >= least && value <= most;
}

}  // namespace

// Each line of the input is an argument.
void check_text(std::string_view rest) {
  std::vector<std::string> words = {"mcec-lab"};
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find('\n'));
    words.emplace_back(word.substr(0, word.find('\0')));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
  }
  std::vector<const char *> argv;
  for (const std::string &word : words) argv.push_back(word.c_str());
  argv.push_back(nullptr);

  const lab::CommandLine line = lab::parse_command_line(int(words.size()), argv.data());
  const lab::Arguments &arguments = line.arguments;
  const bool has_command = arguments.execute != nullptr;
  must(has_command + !line.help.empty() + !line.error.empty() == 1,
       "a command line is exactly one of a command, help and an error");
  must(lab::printable_lines(line.error) == line.error, "an error is printable");
  must(lab::without_passwords(line.error) == lab::printable(line.error),
       "an error contains no password");
  if (!has_command) return;
  must(arguments.execute != lab::execute_run || !arguments.files.empty(), "a run has a scenario");
  must(arguments.execute != lab::execute_what_if || is_between(double(arguments.step), 1, 1e6),
       "what-if has the number of a step");
  must(arguments.format.empty() || arguments.format == "dump" || arguments.format == "state",
       "a format is dump or state");
  must(arguments.pairs.empty() || arguments.left.empty(), "a list of pairs excludes sources");
  must(is_between(arguments.interval, 0.05, 86400), "an interval is within its limits");
  must(arguments.timeout == 0 || is_between(arguments.timeout, 0.001, 1e9),
       "a timeout is within its limits");
  for (const std::string &source : {arguments.left, arguments.right}) {
    if (!source.empty()) check_source(lab::parse_source(source, 0));
  }
}
