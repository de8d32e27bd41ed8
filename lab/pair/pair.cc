#include "pair/pair.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>
#include <system_error>
#include <type_traits>

#include "pair/device.h"
#include "pair/wire.h"

namespace lab {
namespace {

// A switch that is stopped, or that does not answer for so long, is given up.
constexpr int stopped_patience = 2000;
constexpr int longest_patience = 120000;

struct Sockets {
  int ends[2];

  Sockets() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      throw std::system_error(errno, std::generic_category(), "no socket for a switch");
    }
  }
  Sockets(const Sockets &) = delete;
  Sockets &operator=(const Sockets &) = delete;
  ~Sockets() {
    for (std::size_t i = 0; i < 2; ++i) close_end(i);
  }

  void close_end(std::size_t which) {
    if (ends[which] >= 0) close(std::exchange(ends[which], -1));
  }
};

LastLines *shared_lines() {
  void *memory =
      mmap(nullptr, sizeof(LastLines), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "no memory for a switch");
  }
  return static_cast<LastLines *>(memory);
}

void end(Switch &ended) {
  if (ended.control >= 0) close(std::exchange(ended.control, -1));
  ended.process = {};
  if (ended.last_lines != nullptr) munmap(ended.last_lines, sizeof(LastLines));
  ended.last_lines = nullptr;
}

// Is a process stopped by a signal? Its state stands behind its name in parentheses.
bool is_stopped(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  std::getline(file, text);
  const std::size_t end = text.rfind(')');
  return end != text.npos && end + 2 < text.size() &&
         (text[end + 2] == 'T' || text[end + 2] == 't');
}

std::string how_it_ended(ChildProcess &process) {
  const int status = reap(process);
  if (status < 0) return "is gone";
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

std::string switch_name(std::size_t which) {
  return std::string("the ") + switch_names[which] + " switch";
}

// While a switch does not answer: is one of the two stopped? A switch may wait for the other.
void look_at(const Pair &pair, std::size_t which, int waited) {
  for (std::size_t i = 0; i < pair.switches.size(); ++i) {
    if (waited >= stopped_patience && is_stopped(pair.switches[i].process.pid)) {
      throw SwitchFailed(switch_name(i) + " is stopped by a signal, and does not answer");
    }
  }
  if (waited >= longest_patience) throw SwitchFailed(switch_name(which) + " does not answer");
}

// Is it what was asked for, or why that cannot be had?
bool answers(const Reply &reply, const Request &request) {
  if (!reply.problem.empty()) return true;
  return std::visit(
      [&](const auto &asked) {
        using Asked = std::decay_t<decltype(asked)>;
        const auto *answer = std::get_if<typename Asked::Answer>(&reply.answer);
        if constexpr (std::is_same_v<Asked, Check>) {
          return answer != nullptr && answer->views.size() == asked.scopes.size();
        } else {
          return answer != nullptr;
        }
      },
      request.asked);
}

}  // namespace

Pair::Pair() {
  Sockets peer;
  Sockets controls[2];
  try {
    for (std::size_t i = 0; i < switches.size(); ++i) {
      Switch &made = switches[i];
      made.last_lines = shared_lines();
      // A switch ends when the lab closes its line.
      made.process = start_child([&] {
        peer.close_end(1 - i);
        for (Sockets &control : controls) control.close_end(0);
        controls[1 - i].close_end(1);
        for (const Switch &other : switches) {
          if (other.control >= 0) close(other.control);
        }
        serve(controls[i].ends[1], peer.ends[i], i == 0, *made.last_lines);
      });
      made.control = std::exchange(controls[i].ends[0], -1);
    }
  } catch (const std::system_error &problem) {
    for (Switch &made : switches) end(made);
    throw SwitchFailed(problem.what());
  }
}

Pair::~Pair() {
  for (Switch &ended : switches) end(ended);
}

Replies ask(Pair &pair, const Requests &requests) {
  Replies replies;
  std::string died;
  std::string failed;
  const auto add_line = [](std::string &problems, const std::string &text) {
    problems += (problems.empty() ? "" : "\n") + text;
  };
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (!requests[i]) continue;
    write_frame(pair.switches[i].control, encode(*requests[i]),
                [&](int waited) { look_at(pair, i, waited); });
  }
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (!requests[i]) continue;
    Switch &answering = pair.switches[i];
    try {
      const auto frame =
          read_frame(answering.control, [&](int waited) { look_at(pair, i, waited); });
      if (frame) replies[i] = decode_reply(*frame);
      if (frame && !answers(*replies[i], *requests[i])) {
        throw Garbled("it answers another question");
      }
    } catch (const Garbled &garbled) {
      throw SwitchFailed(switch_name(i) + ": " + garbled.what());
    }
    if (!replies[i]) {
      add_line(died, switch_name(i) + " " + how_it_ended(answering.process) +
                         last_words(*answering.last_lines));
    } else if (!replies[i]->problem.empty()) {
      add_line(failed, switch_name(i) + ": " + replies[i]->problem);
    }
  }
  // A switch that misses the other one reports nothing but its end.
  if (!died.empty() || !failed.empty()) throw SwitchFailed(died.empty() ? failed : died);
  return replies;
}

}  // namespace lab
