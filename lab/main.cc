// mcec-lab: checks whether the type-1 spanning-tree parameters of two switches agree.

#include <fcntl.h>
#include <fmt/core.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "cli/commands.h"
#include "output/layout.h"
#include "standin.h"
#include "tasks/pool.h"
#include "text/text.h"
#include "text/wait.h"

namespace {

using namespace lab;

Status parse_and_execute(int argc, char **argv) {
  const CommandLine line = parse_command_line(argc, argv);
  fmt::print("{}", line.help);
  if (!line.error.empty()) {
    print_error(line.error);
    return wrong;
  }
  const bool is_help = line.arguments.execute == nullptr;
  return is_help ? agreed : line.arguments.execute(line.arguments);
}

// Opens closed standard descriptors in the wrong direction, so that no other file gets their
// numbers and their use still fails.
void reserve_standard_descriptors() {
  for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(file, F_GETFD) < 0) open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 2 && std::string_view(argv[1]) == pool_argument) return serve_jobs();
  reserve_standard_descriptors();
  std::setlocale(LC_CTYPE, "");
  stop_on_signals();
  standin_reset();
  Status status = wrong;
  bool is_stopped = false;
  std::string why;  // why the output cannot be written
  try {
    status = parse_and_execute(argc, argv);
  } catch (const Interrupted &) {
    is_stopped = true;
  } catch (const std::bad_alloc &) {
    print_error("mcec-lab: out of memory");
  } catch (const std::system_error &problem) {
    if (std::ferror(stdout) != 0) why = problem.code().message();
    if (why.empty()) print_error("mcec-lab: " + printable(problem.what()));
  } catch (const std::exception &problem) {
    print_error("mcec-lab: " + printable(problem.what()));
  }
  if (flush_stdout(why) && !is_stopped) return status;
  if (!interrupted()) {
    print_error("mcec-lab: the output cannot be written: " + why);
    return wrong;
  }
  print_error("mcec-lab: interrupted");
  _exit(wrong);  // exit() would try to flush the output again
}
