// Command lines: they are something to do, help, or an error. Nothing is carried out, but what the
// sources say is read.

#include "cli/arguments.h"
#include "sources.h"

namespace {

using lab::Arguments;

bool is_between(double value, double least, double most) {
  return value >= least && value <= most;
}

void look_at_arguments(lab::Action action, const Arguments &is) {
  must(action != lab::run_scenarios || !is.files.empty(), "a run has scenarios");
  must(action != lab::ask_what_if || is_between(double(is.step), 1, 1e6), "what-if has a step");
  must(is_between(is.interval, 0.05, 86400), "an interval is one that can be waited");
  must(is.timeout == 0 || is_between(is.timeout, 0.001, 1e9), "a time can be waited for");
  must(is.format.empty() || is.format == "dump" || is.format == "state", "a format is known");
}

}  // namespace

// A word a line.
int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  std::vector<std::string> words = {"mcec-lab"};
  std::string_view rest = text_of(data, size);
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find('\n'));
    words.emplace_back(word.substr(0, word.find('\0')));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
  }
  std::vector<const char *> argv;
  for (const std::string &word : words) argv.push_back(word.c_str());
  argv.push_back(nullptr);

  const lab::Line line = lab::parse_line(int(words.size()), argv.data());
  must((line.action != nullptr) + !line.help.empty() + !line.error.empty() == 1,
       "a line is to be done, or help, or a error");
  must(lab::printable_lines(line.error) == line.error, "a error can be shown");
  must(lab::without_passwords(line.error) == lab::printable(line.error),
       "a error shows no password");
  if (line.action == nullptr) return 0;
  look_at_arguments(line.action, line.arguments);
  for (const std::string &source : {line.arguments.left, line.arguments.right}) {
    look_at_source(source);
  }
  return 0;
}
