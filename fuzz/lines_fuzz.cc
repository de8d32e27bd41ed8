// Command lines: a command, help, or an error. None is carried out, but sources are parsed.

#include "cli/commands.h"
#include "texts.h"

namespace {

bool is_between(double value, double least, double most) {
  return value >= least && value <= most;
}

}  // namespace

// A word a line.
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
  const lab::Arguments &is = line.arguments;
  const bool has_command = is.execute != nullptr;
  must(has_command + !line.help.empty() + !line.error.empty() == 1,
       "a command line is a command, or help, or an error");
  must(lab::printable_lines(line.error) == line.error, "an error can be printed");
  must(lab::without_passwords(line.error) == lab::printable(line.error),
       "an error has no password");
  if (!has_command) return;
  must(is.execute != lab::execute_run || !is.files.empty(), "a run has scenarios");
  must(is.execute != lab::execute_what_if || is_between(double(is.step), 1, 1e6),
       "what-if has a step");
  must(is.format.empty() || is.format == "dump" || is.format == "state", "a format is known");
  must(is.pairs.empty() || is.left.empty(), "many pairs exclude one");
  must(is_between(is.interval, 0.05, 86400), "an interval is one that can be waited");
  must(is.timeout == 0 || is_between(is.timeout, 0.001, 1e9), "a time can be waited for");
  for (const std::string &source : {is.left, is.right}) {
    if (!source.empty()) check_source(lab::parse_source(source, 0));
  }
}
