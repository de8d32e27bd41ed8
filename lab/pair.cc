#include "pair.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <system_error>

#include "device.h"
#include "wire.h"

namespace lab {
namespace {

struct Sockets {
  int ends[2];

  Sockets() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      throw std::system_error(errno, std::generic_category(), "socketpair");
    }
  }
};

LastLines *shared_lines() {
  void *memory =
      mmap(nullptr, sizeof(LastLines), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  return static_cast<LastLines *>(memory);
}

// The life of a switch process. It ends when the lab closes its line, or dies itself.
[[noreturn]] void live(int control, int peer, bool speaks_first, LastLines &last_lines) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  leave_signals_to_the_lab();
  serve(control, peer, speaks_first, last_lines);
  _exit(0);
}

std::string how_it_ended(pid_t pid) {
  int status = 0;
  if (waitpid(pid, &status, 0) != pid) return "is gone";
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    return "died of SIG" + std::string(sigabbrev_np(number)) + " (" + strsignal(number) + ")";
  }
  return "ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string last_words(const LastLines &lines) {
  std::string text;
  const uint32_t kept = std::min(lines.count, LastLines::kept);
  for (uint32_t i = lines.count - kept; i != lines.count; ++i) {
    text += "\n    " + log_line(lines.text[i % LastLines::kept]);
  }
  return text.empty() ? "; it had logged nothing" : "; the last lines of its event history:" + text;
}

}  // namespace

Pair::Pair() {
  const Sockets peer;
  const Sockets controls[2];
  for (std::size_t i = 0; i < switches.size(); ++i) {
    Switch &made = switches[i];
    made.last_lines = shared_lines();
    made.pid = fork();
    if (made.pid < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (made.pid == 0) {
      close(peer.ends[1 - i]);
      for (const Sockets &control : controls) close(control.ends[0]);
      close(controls[1 - i].ends[1]);
      live(controls[i].ends[1], peer.ends[i], i == 0, *made.last_lines);
    }
    made.control = controls[i].ends[0];
  }
  for (std::size_t i = 0; i < switches.size(); ++i) {
    close(peer.ends[i]);
    close(controls[i].ends[1]);
  }
}

Pair::~Pair() {
  for (const Switch &ended : switches) close(ended.control);
  for (const Switch &ended : switches) {
    if (ended.pid > 0) {
      kill(ended.pid, SIGKILL);
      waitpid(ended.pid, nullptr, 0);
    }
    munmap(ended.last_lines, sizeof(LastLines));
  }
}

std::array<Json, 2> ask(Pair &pair, const std::array<bool, 2> &asked, const Json &request) {
  const Bytes frame = Json::to_cbor(request);
  std::array<Json, 2> replies;
  std::string problems;
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (asked[i]) write_frame(pair.switches[i].control, frame);
  }
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (!asked[i]) continue;
    Switch &answering = pair.switches[i];
    if (const std::optional<Bytes> reply = read_frame(answering.control)) {
      replies[i] = Json::from_cbor(*reply);
      continue;
    }
    problems += std::string(problems.empty() ? "" : "\n") + "the " + switch_names[i] + " switch " +
                how_it_ended(answering.pid) + last_words(*answering.last_lines);
    answering.pid = -1;
  }
  if (!problems.empty()) throw SwitchFailed(problems);
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (replies[i].contains("problem")) {
      throw SwitchFailed(std::string("the ") + switch_names[i] +
                         " switch: " + replies[i]["problem"].get<std::string>());
    }
  }
  return replies;
}

}  // namespace lab
